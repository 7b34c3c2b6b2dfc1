// Whether each text of the sources has a translation in each language.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "harness/temporary_folder.h"
#include "support/language.h"

namespace brimwatch {
namespace {

// What only the log says, though not in the statement that writes it, and what is said in both.
const std::set<std::string> leftAlone = {
    "언어 · Language",
    "열쇠 쓰기",
    "열쇠 읽기",
    "열쇠 지우기",
    "열쇠 보기",
    "열쇠 폴더",
    "링크라서 읽지 않는다",
    "파일이 아니다",
    "다른 사용자의 것이다",
    "폴더가 아니다",
    "다른 사용자가 볼 수 있다",
    "다른 사용자가 쓸 수 있다",
};

bool isHangul(std::string_view text) {
    // U+AC00 to U+D7A3 begin with EA B0 to ED 9E in UTF-8.
    for (std::size_t index = 0; index + 2 < text.size(); ++index) {
        const auto lead = static_cast<unsigned char>(text[index]);
        const auto next = static_cast<unsigned char>(text[index + 1]);
        if ((lead == 0xEA && next >= 0xB0) || lead == 0xEB || lead == 0xEC ||
            (lead == 0xED && next <= 0x9E && next >= 0x80))
            return true;
    }
    return false;
}

// The string literals of a source, those that follow each other as one.
class Literals {
  public:
    explicit Literals(std::string source) : source_(std::move(source)) {}

    std::vector<std::string> find() {
        while (position_ < source_.size())
            step();
        finish();
        return found_;
    }

  private:
    void step() {
        const char character = source_[position_];
        if (source_.compare(position_, 2, "//") == 0) {
            position_ = std::min(source_.find('\n', position_), source_.size());
        } else if (source_.compare(position_, 3, "'\"'") == 0) {
            position_ += 3;
        } else if (source_.compare(position_, 3, "R\"(") == 0) {
            position_ = std::min(source_.find(")\"", position_), source_.size() - 2) + 2;
        } else if (character == '"') {
            readLiteral();
        } else {
            if (std::string_view(" \n").find(character) == std::string_view::npos) finish();
            if (std::string_view(";{}").find(character) != std::string_view::npos)
                statement_ = position_ + 1;
            ++position_;
        }
    }
    void readLiteral() {
        for (++position_; source_.at(position_) != '"'; ++position_) {
            if (source_[position_] == '\\') ++position_;
            text_ += source_[position_];
        }
        ++position_;
    }
    void finish() {
        const std::string_view statement =
            std::string_view(source_).substr(statement_, position_ - statement_);
        const bool isLog = statement.find("qCInfo") != std::string_view::npos ||
                           statement.find("qCWarning") != std::string_view::npos ||
                           statement.find("qCCritical") != std::string_view::npos;
        if (isHangul(text_) && !isLog) found_.push_back(text_);
        text_.clear();
    }

    std::string source_;
    std::size_t position_ = 0;
    std::size_t statement_ = 0;
    std::string text_;
    std::vector<std::string> found_;
};

std::map<std::string, std::string> textsOfSources() {
    std::map<std::string, std::string> files;  // by text
    for (const auto& entry : std::filesystem::recursive_directory_iterator(BRIMWATCH_SOURCES)) {
        const std::string kind = entry.path().extension().string();
        if (kind != ".cpp" && kind != ".h" && kind != ".qml") continue;
        for (const std::string& text : Literals(test::readFile(entry.path().string())).find())
            files.emplace(text, entry.path().filename().string());
    }
    return files;
}

// The key itself, and what stands between its places.
void addFragments(std::string_view key, std::set<std::string>& fragments) {
    fragments.emplace(key);
    std::string fragment;
    for (std::size_t index = 0; index < key.size(); ++index) {
        const bool isPlace = key[index] == '%' && index + 1 < key.size() && key[index + 1] >= '1' &&
                             key[index + 1] <= '9';
        if (!isPlace) {
            fragment += key[index];
            continue;
        }
        fragments.insert(fragment);
        fragment.clear();
        ++index;
    }
    fragments.insert(fragment);
}

TEST(Translations, OfTheSourcesAreFound) {
    const std::map<std::string, std::string> texts = textsOfSources();
    EXPECT_TRUE(
        texts.contains("아직 받은 한도가 없어요. 설정에서 Claude Code와 Codex를 연결해 주세요."));
    EXPECT_TRUE(texts.contains("닫기"));
    EXPECT_FALSE(texts.contains("보냄: 계정 %zu개"));
}

TEST(Translations, AreThereForEachTextOfTheSources) {
    for (const Language& language : allLanguages().subspan(1)) {
        std::set<std::string> known = leftAlone;
        for (const Translation& entry : language.translations)
            addFragments(entry.key, known);
        for (const auto& [text, file] : textsOfSources())
            EXPECT_TRUE(known.contains(text)) << language.code << ": " << file << ": " << text;
    }
}

TEST(Translations, HoldNoKorean) {
    for (const Language& language : allLanguages().subspan(1))
        for (const Translation& entry : language.translations)
            EXPECT_FALSE(isHangul(entry.text)) << entry.text;
}

}  // namespace
}  // namespace brimwatch
