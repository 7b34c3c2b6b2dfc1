// The accounts of Codex in the settings.
//
// What it shows is up to date after `update`. Rows are named by their numbers in `accounts`; for a
// row that has gone nothing happens. Main thread.
#pragma once

#include <QObject>
#include <QString>

#include "core/helper_model.h"
#include "platform/file_manager.h"
#include "presentation/setup/account_rows.h"

namespace brimwatch {

class CodexSection final : public QObject {
    Q_OBJECT
    Q_PROPERTY(brimwatch::AccountRowsModel* accounts READ accounts CONSTANT)
    Q_PROPERTY(bool isEnabled READ isEnabled NOTIFY isEnabledChanged)
    // Of Codex as a whole; empty if there is nothing to say.
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)

  public:
    // What is referred to must outlive the section.
    CodexSection(HelperModel& model, FileManager& fileManager);

    AccountRowsModel* accounts() { return &accounts_; }
    bool isEnabled() const { return model_.codexEnabled(); }
    QString status() const;
    void update();

    Q_INVOKABLE void setEnabled(bool enabled);
    Q_INVOKABLE void connectAll();
    Q_INVOKABLE void receiveNow();
    Q_INVOKABLE void setAccount(int row, bool on);
    Q_INVOKABLE void reveal(int row);

  signals:
    void isEnabledChanged();
    void statusChanged();

  private:
    HelperModel& model_;
    FileManager& fileManager_;
    AccountRowsModel accounts_;
};

}  // namespace brimwatch
