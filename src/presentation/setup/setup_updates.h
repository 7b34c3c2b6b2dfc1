// Updates as the settings offer them. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <utility>

namespace brimwatch {

class SetupUpdates : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isAvailable READ isAvailable CONSTANT)
    // Why there are none, for the user; may be empty.
    Q_PROPERTY(QString unavailabilityText READ unavailabilityText NOTIFY statusChanged)
    Q_PROPERTY(bool automaticallyUpdates READ automaticallyUpdates WRITE setAutomaticallyUpdates
                   NOTIFY automaticallyUpdatesChanged)
    // What is under way, or came of it; empty if there is nothing to say.
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusChanged)
    Q_PROPERTY(bool needsAttention READ needsAttention NOTIFY statusChanged)
    Q_PROPERTY(bool canInstall READ canInstall NOTIFY statusChanged)
    Q_PROPERTY(bool canSkip READ canSkip NOTIFY statusChanged)
    // There is a page about the new version.
    Q_PROPERTY(bool hasPage READ hasPage NOTIFY statusChanged)
    // The user is to see them; whoever has shown them to him takes it back.
    Q_PROPERTY(bool isRevealed READ isRevealed WRITE setRevealed NOTIFY isRevealedChanged)

  public:
    SetupUpdates() = default;

    virtual bool isAvailable() const = 0;
    virtual QString unavailabilityText() const = 0;
    virtual bool automaticallyUpdates() const = 0;
    virtual void setAutomaticallyUpdates(bool value) = 0;
    virtual QString statusText() const = 0;
    virtual bool needsAttention() const = 0;
    virtual bool canInstall() const = 0;
    virtual bool canSkip() const = 0;
    virtual bool hasPage() const = 0;
    bool isRevealed() const { return isRevealed_; }
    void setRevealed(bool revealed) {
        if (std::exchange(isRevealed_, revealed) != revealed) emit isRevealedChanged();
    }

    Q_INVOKABLE virtual void checkNow() = 0;
    Q_INVOKABLE virtual void install() = 0;
    Q_INVOKABLE virtual void skip() = 0;
    Q_INVOKABLE virtual void showPage() = 0;

  signals:
    void automaticallyUpdatesChanged();
    void statusChanged();  // or the language in which it is told
    void isRevealedChanged();

  private:
    bool isRevealed_ = false;
};

}  // namespace brimwatch
