// What is sent to phones, in the settings. It passes on what the publishers say. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <string>

#include "core/helper_model.h"

namespace brimwatch {

class PhonesSection final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool sendsToIPhone READ sendsToIPhone NOTIFY sendsToIPhoneChanged)
    Q_PROPERTY(QString iPhoneStatus READ iPhoneStatus NOTIFY iPhoneStatusChanged)
    Q_PROPERTY(bool iPhoneNeedsAttention READ iPhoneNeedsAttention NOTIFY iPhoneStatusChanged)
    // The account is missing, and there is a way to it.
    Q_PROPERTY(bool iPhoneOffersSignIn READ iPhoneOffersSignIn NOTIFY iPhoneStatusChanged)
    Q_PROPERTY(QString androidStatus READ androidStatus NOTIFY androidStatusChanged)
    Q_PROPERTY(bool androidNeedsAttention READ androidNeedsAttention NOTIFY androidStatusChanged)
    Q_PROPERTY(bool androidOffersSignIn READ androidOffersSignIn NOTIFY androidStatusChanged)

  public:
    // What is referred to must outlive the section.
    struct Surroundings {
        HelperModel& model;
        std::function<bool()> canSignIn;
        std::function<void()> signIn;
        std::function<void()> showPhoneLink;
    };

    explicit PhonesSection(Surroundings surroundings);

    bool sendsToIPhone() const;
    QString iPhoneStatus() const;
    bool iPhoneNeedsAttention() const;
    bool iPhoneOffersSignIn() const;
    QString androidStatus() const;
    bool androidNeedsAttention() const;
    bool androidOffersSignIn() const;

    Q_INVOKABLE void setSendsToIPhone(bool sends);
    Q_INVOKABLE void signIn() const;
    Q_INVOKABLE void showPhoneLink() const;

  signals:
    void sendsToIPhoneChanged();
    void iPhoneStatusChanged();
    void androidStatusChanged();

  private:
    Surroundings surroundings_;
};

}  // namespace brimwatch
