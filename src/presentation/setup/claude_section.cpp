#include "presentation/setup/claude_section.h"

#include <algorithm>

#include "presentation/translated.h"

namespace brimwatch {
namespace {

QString footerOf(const HelperModel& model) {
    const auto& accounts = model.accounts();
    const bool isConnected =
        std::any_of(accounts.begin(), accounts.end(),
                    [&model](const auto& account) { return model.isClaudeAccountOn(account); });
    if (isConnected) {
        return translated("Claude는 연결한 계정의 Claude Code에서 응답을 받으면 갱신돼요.");
    }
    if (accounts.empty()) {
        return translated(
            "Claude Code 계정을 못 찾았어요. Claude Code를 한 번 실행한 뒤 다시 열어 주세요.");
    }
    if (model.isInstalled()) return {};
    return translated("앱을 응용 프로그램 폴더에 설치한 뒤 Claude Code 연결을 눌러 주세요.");
}

}  // namespace

ClaudeSection::ClaudeSection(HelperModel& model, FileManager& fileManager)
    : model_(model), fileManager_(fileManager) {}

void ClaudeSection::update() {
    accounts_.setAccounts(claudeAccountRows(model_));
    const QString footer = footerOf(model_);
    if (footer_ == footer) return;
    footer_ = footer;
    emit footerChanged();
}

void ClaudeSection::connectAll() {
    model_.connectClaude();
    update();
}

void ClaudeSection::setAccount(int row, bool on) {
    const auto account = accounts_.find(row, model_.accounts());
    if (!account) return;
    if (on) {
        model_.connectClaude(*account);
    } else {
        model_.disconnectClaude(*account);
    }
    update();
}

void ClaudeSection::reveal(int row) {
    const auto account = accounts_.find(row, model_.accounts());
    if (account) fileManager_.reveal(account->directory);
}

}  // namespace brimwatch
