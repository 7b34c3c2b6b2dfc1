// The accounts of Claude Code in the settings.
//
// What it shows is up to date after `update` and after its own operations. Rows are named by their
// numbers in `accounts`; for a row that has gone nothing happens. Main thread.
#pragma once

#include <QObject>
#include <QString>

#include "core/helper_model.h"
#include "platform/file_manager.h"
#include "presentation/setup/account_rows.h"

namespace brimwatch {

class ClaudeSection final : public QObject {
    Q_OBJECT
    Q_PROPERTY(brimwatch::AccountRowsModel* accounts READ accounts CONSTANT)
    // Empty if there is nothing to say.
    Q_PROPERTY(QString footer READ footer NOTIFY footerChanged)

  public:
    // What is referred to must outlive the section.
    ClaudeSection(HelperModel& model, FileManager& fileManager);

    AccountRowsModel* accounts() { return &accounts_; }
    const QString& footer() const { return footer_; }
    void update();

    Q_INVOKABLE void connectAll();
    Q_INVOKABLE void setAccount(int row, bool on);
    Q_INVOKABLE void reveal(int row);

  signals:
    void footerChanged();

  private:
    HelperModel& model_;
    FileManager& fileManager_;
    AccountRowsModel accounts_;
    QString footer_;
};

}  // namespace brimwatch
