// The sheet in which the user names a folder with an account. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QWindow>
#include <functional>
#include <optional>
#include <string>

#include "core/helper_model.h"
#include "platform/folder_picker.h"

namespace brimwatch {

enum class AccountFolderKind { claude, codex };

class AddAccountFolder final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY kindChanged)
    Q_PROPERTY(QString pathLabel READ pathLabel NOTIFY kindChanged)
    Q_PROPERTY(QString placeholder READ placeholder NOTIFY kindChanged)
    Q_PROPERTY(QString note READ note NOTIFY kindChanged)
    Q_PROPERTY(QString pathIdentifier READ pathIdentifier NOTIFY kindChanged)
    // As the user writes it; "~" stands for the home folder.
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged)
    // The folder was refused, and why.
    Q_PROPERTY(bool invalid READ isInvalid NOTIFY invalidChanged)
    Q_PROPERTY(QString invalidText READ invalidText NOTIFY invalidChanged)

  public:
    // What is referred to must outlive the sheet.
    struct Surroundings {
        HelperModel& model;
        FolderPicker& folderPicker;
        std::function<QWindow*()> window;  // that the sheet is in; none if there is none
    };

    explicit AddAccountFolder(Surroundings surroundings);

    QString title() const;
    QString pathLabel() const;
    QString placeholder() const;
    QString note() const;
    QString pathIdentifier() const;
    const QString& path() const { return path_; }
    void setPath(const QString& path);
    bool isInvalid() const { return !invalidText_.isEmpty(); }
    const QString& invalidText() const { return invalidText_; }

    // For an account of that kind, with nothing written.
    Q_INVOKABLE void openForClaude() { open(AccountFolderKind::claude); }
    Q_INVOKABLE void openForCodex() { open(AccountFolderKind::codex); }
    void open(AccountFolderKind kind);
    // Lets the user choose a folder, whose path is then written.
    Q_INVOKABLE void pick();
    Q_INVOKABLE void save();

  signals:
    void kindChanged();
    void pathChanged();
    void invalidChanged();
    void opened();
    // The folder was added.
    void dismissed();

  private:
    std::optional<std::string> folder() const;
    bool add(const std::string& folder);
    void refuse();
    void takePicked(const std::string& folder);
    void setInvalidText(const QString& text);

    Surroundings surroundings_;
    AccountFolderKind kind_ = AccountFolderKind::claude;
    int opening_ = 0;  // a folder that was picked in a former one counts no more
    QString path_;
    std::optional<std::string> picked_;  // what `path_` shows
    QString invalidText_;
};

}  // namespace brimwatch
