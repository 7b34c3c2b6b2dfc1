#include "presentation/setup/add_account_folder.h"

#include <QPointer>
#include <utility>

#include "presentation/translated.h"
#include "support/path_text.h"
#include "support/paths.h"

namespace brimwatch {

AddAccountFolder::AddAccountFolder(Surroundings surroundings)
    : surroundings_(std::move(surroundings)) {
    connect(&surroundings_.model, &HelperModel::languageChanged, this,
            &AddAccountFolder::kindChanged);
}

QString AddAccountFolder::title() const {
    return kind_ == AccountFolderKind::claude ? translated("Claude Code 계정 추가")
                                              : translated("Codex 계정 추가");
}

QString AddAccountFolder::pathLabel() const {
    return kind_ == AccountFolderKind::claude ? translated("Claude Code 설정 폴더 경로")
                                              : translated("Codex 설정 폴더 경로");
}

QString AddAccountFolder::placeholder() const {
    return kind_ == AccountFolderKind::claude ? QStringLiteral("~/work/claude")
                                              : QStringLiteral("~/.codex-review");
}

QString AddAccountFolder::note() const {
    return kind_ == AccountFolderKind::claude
               ? translated(
                     "Claude Code를 실행한 적이 있는 설정 폴더(.claude.json이 있는 폴더)를 골라 "
                     "주세요.")
               : translated("auth.json이나 config.toml이 있는 Codex 설정 폴더를 골라 주세요.");
}

QString AddAccountFolder::pathIdentifier() const {
    return kind_ == AccountFolderKind::claude ? QStringLiteral("claude.accountPath")
                                              : QStringLiteral("codex.accountPath");
}

void AddAccountFolder::setPath(const QString& path) {
    if (path_ == path) return;
    path_ = path;
    picked_.reset();
    setInvalidText({});
    emit pathChanged();
}

void AddAccountFolder::open(AccountFolderKind kind) {
    kind_ = kind;
    ++opening_;
    emit kindChanged();
    setPath({});
    setInvalidText({});
    emit opened();
}

void AddAccountFolder::pick() {
    QWindow* window = surroundings_.window();
    if (window == nullptr) return;
    surroundings_.folderPicker.pick(
        *window, title(),
        [sheet = QPointer<AddAccountFolder>(this), opening = opening_](const auto& folder) {
            if (sheet && folder && sheet->opening_ == opening) sheet->takePicked(*folder);
        });
}

// A name that is no text can still be shown, but not be read back.
void AddAccountFolder::takePicked(const std::string& folder) {
    setPath(QString::fromStdString(folder));
    picked_ = folder;
}

void AddAccountFolder::save() {
    const std::optional<std::string> chosen = folder();
    if (!chosen) return setInvalidText(note());
    if (!add(*chosen)) return refuse();
    setInvalidText({});
    emit dismissed();
}

// The sheet tells the failure by itself, and stays.
void AddAccountFolder::refuse() {
    const std::optional<std::string> failure = surroundings_.model.failure();
    surroundings_.model.clearFailure();
    setInvalidText(failure ? translated(*failure) : note());
}

// Nothing unless it is absolute.
std::optional<std::string> AddAccountFolder::folder() const {
    if (picked_) return picked_;
    std::optional<std::string> path = pathFromText(path_.trimmed().toStdString());
    if (!path) return std::nullopt;
    if (*path == "~" || path->starts_with("~/")) {
        path = surroundings_.model.home() + path->substr(1);
    }
    return path->starts_with('/') ? path : std::nullopt;
}

bool AddAccountFolder::add(const std::string& folder) {
    return kind_ == AccountFolderKind::claude ? surroundings_.model.addClaudeFolder(folder)
                                              : surroundings_.model.addCodexFolder(folder);
}

void AddAccountFolder::setInvalidText(const QString& text) {
    if (invalidText_ == text) return;
    invalidText_ = text;
    emit invalidChanged();
}

}  // namespace brimwatch
