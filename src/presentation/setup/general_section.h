// The settings that stand for themselves: how things look, what is shown, when the program starts.
// A choice is told by its number among its titles. It passes on what the model says. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include "core/helper_model.h"
#include "presentation/setup/setup_updates.h"

namespace brimwatch {

class GeneralSection final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString help READ help NOTIFY languageChanged)
    Q_PROPERTY(QStringList themes READ themes NOTIFY languageChanged)
    Q_PROPERTY(int theme READ theme WRITE setTheme NOTIFY themeChanged)
    Q_PROPERTY(QStringList displays READ displays NOTIFY languageChanged)
    Q_PROPERTY(int display READ display WRITE setDisplay NOTIFY displayChanged)
    Q_PROPERTY(QStringList periods READ periods NOTIFY languageChanged)
    Q_PROPERTY(int period READ period WRITE setPeriod NOTIFY periodChanged)
    Q_PROPERTY(QStringList languages READ languages CONSTANT)
    Q_PROPERTY(int language READ language WRITE setLanguage NOTIFY languageChanged)
    Q_PROPERTY(bool launchesAtLogin READ launchesAtLogin NOTIFY launchesAtLoginChanged)
    Q_PROPERTY(brimwatch::SetupUpdates* updates READ updates CONSTANT)

  public:
    // What is referred to must outlive the section.
    GeneralSection(HelperModel& model, SetupUpdates& updates);

    QString help() const;
    static QStringList themes();
    int theme() const;
    void setTheme(int index);
    static QStringList displays();
    int display() const;
    void setDisplay(int index);
    static QStringList periods();
    int period() const;
    void setPeriod(int index);
    static QStringList languages();
    int language() const;
    void setLanguage(int index);
    bool launchesAtLogin() const { return model_.launchAtLogin(); }
    SetupUpdates* updates() { return &updates_; }

    // Where the session refuses, `launchesAtLogin` stays as it is.
    Q_INVOKABLE void setLaunchesAtLogin(bool launches);

  signals:
    void themeChanged();
    void displayChanged();
    void periodChanged();
    void languageChanged();
    void launchesAtLoginChanged();

  private:
    HelperModel& model_;
    SetupUpdates& updates_;
};

}  // namespace brimwatch
