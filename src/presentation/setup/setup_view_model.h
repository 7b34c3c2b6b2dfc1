// What the settings show, and what their controls do.
//
// While they are shown they follow the model, at most once for each turn of the event loop. While
// they are hidden they do nothing; they are up to date as soon as they are shown. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <QWindow>
#include <functional>
#include <string>

#include "core/helper_model.h"
#include "platform/file_manager.h"
#include "platform/folder_picker.h"
#include "presentation/setup/add_account_folder.h"
#include "presentation/setup/card_order_section.h"
#include "presentation/setup/claude_section.h"
#include "presentation/setup/codex_section.h"
#include "presentation/setup/general_section.h"
#include "presentation/setup/phones_section.h"
#include "presentation/setup/setup_updates.h"

namespace brimwatch {

class SetupViewModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(brimwatch::ClaudeSection* claude READ claude CONSTANT)
    Q_PROPERTY(brimwatch::CodexSection* codex READ codex CONSTANT)
    Q_PROPERTY(brimwatch::CardOrderSection* cardOrder READ cardOrder CONSTANT)
    Q_PROPERTY(brimwatch::PhonesSection* phones READ phones CONSTANT)
    Q_PROPERTY(brimwatch::GeneralSection* general READ general CONSTANT)
    Q_PROPERTY(brimwatch::AddAccountFolder* addFolder READ addFolder CONSTANT)
    Q_PROPERTY(QString promise READ promise NOTIFY languageChanged)  // in Markdown
    Q_PROPERTY(QString spokenPromise READ spokenPromise NOTIFY languageChanged)
    // What went wrong; empty if nothing did.
    Q_PROPERTY(QString failure READ failure NOTIFY failureChanged)
    Q_PROPERTY(bool isRemoving READ isRemoving NOTIFY isRemovingChanged)
    Q_PROPERTY(bool removedEverything READ removedEverything NOTIFY removedEverythingChanged)

  public:
    // What is referred to must outlive the settings.
    struct Surroundings {
        HelperModel& model;
        FileManager& fileManager;
        FolderPicker& folderPicker;
        SetupUpdates& updates;
        std::function<QWindow*()> window;  // of the settings; none if there is none
        // To the service that keeps the records for phones.
        std::function<bool()> canSignIn;
        std::function<void()> signIn;
        std::function<void()> showPhoneLink;
    };

    explicit SetupViewModel(const Surroundings& surroundings);

    ClaudeSection* claude() { return &claude_; }
    CodexSection* codex() { return &codex_; }
    CardOrderSection* cardOrder() { return &cardOrder_; }
    PhonesSection* phones() { return &phones_; }
    GeneralSection* general() { return &general_; }
    AddAccountFolder* addFolder() { return &addFolder_; }
    static QString promise();
    static QString spokenPromise();
    const QString& failure() const { return failure_; }
    bool isRemoving() const { return model_.isRemoving(); }
    bool removedEverything() const { return model_.removedEverything(); }

    // To be called before the settings appear, and after they have gone.
    void setShown(bool shown);

    // The user has seen it.
    Q_INVOKABLE void clearFailure();
    // By the id of the account's record. An empty name gives the original one back.
    Q_INVOKABLE void setUsageName(const QString& id, const QString& name);
    Q_INVOKABLE void removeEverything();

  signals:
    void languageChanged();
    void failureChanged();
    void isRemovingChanged();
    void removedEverythingChanged();

  private:
    void observe(void (HelperModel::*changed)());
    void scheduleUpdate();
    void update();

    HelperModel& model_;
    ClaudeSection claude_;
    CodexSection codex_;
    CardOrderSection cardOrder_;
    PhonesSection phones_;
    GeneralSection general_;
    AddAccountFolder addFolder_;
    QString failure_;
    bool isShown_ = false;
    QTimer modelChanged_{this};
};

}  // namespace brimwatch
