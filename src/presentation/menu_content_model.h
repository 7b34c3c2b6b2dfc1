// What the popover shows, and what its buttons do.
//
// While it is shown its cards follow the model, at most once for each turn of the event loop, are
// made anew every 30 seconds, and count down by the second where a limit starts anew within a day.
// While it is hidden it does nothing and its timers rest; it is up to date as soon as it is shown.
// Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <vector>

#include "core/helper_model.h"
#include "presentation/subscription_usage_card.h"
#include "presentation/usage_cards_model.h"
#include "support/instant.h"

namespace brimwatch {

class MenuContentModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(brimwatch::UsageCardsModel* cards READ cards CONSTANT)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY isEmptyChanged)
    Q_PROPERTY(bool canReorder READ canReorder NOTIFY canReorderChanged)
    Q_PROPERTY(double listHeight READ listHeight NOTIFY listHeightChanged)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY languageChanged)
    // How it is with sending to iPhones, and whether the user has to do something about it.
    Q_PROPERTY(QString sendingText READ sendingText NOTIFY sendingChanged)
    Q_PROPERTY(bool isSendingFailure READ isSendingFailure NOTIFY sendingChanged)

  public:
    // What is referred to must outlive the content.
    struct Surroundings {
        HelperModel& model;
        std::function<Instant()> now;
        // What each screen leaves to windows, in points.
        std::function<std::vector<double>()> screenHeights;
        std::function<void()> openSetup;
        std::function<void()> quit;
    };

    explicit MenuContentModel(Surroundings surroundings);

    UsageCardsModel* cards() { return &cardsModel_; }
    bool isEmpty() const { return isEmpty_; }
    bool canReorder() const { return canReorder_; }
    // The most height for all cards, in points.
    double listHeight() const { return listHeight_; }
    static QString emptyText();
    const QString& sendingText() const { return sendingText_; }
    bool isSendingFailure() const { return isSendingFailure_; }

    // To be called before the popover appears, and after it has gone.
    void setShown(bool shown);

    Q_INVOKABLE void receiveNow();
    Q_INVOKABLE void openSetup() const;
    Q_INVOKABLE void reorderCards();
    Q_INVOKABLE void quit() const;

  signals:
    void isEmptyChanged();
    void canReorderChanged();
    void listHeightChanged();
    void sendingChanged();
    void languageChanged();

  private:
    using Changed = void (MenuContentModel::*)();

    void observe(void (HelperModel::*changed)());
    void scheduleRebuild();
    void rebuild();
    void readSending();
    void countDown();
    void scheduleCountdown(Instant now);

    // Gives the field its value and tells the observers, if that is a change.
    template <class Value>
    void assign(Value& field, Value value, Changed changed) {
        if (field == value) return;
        field = value;
        emit(this->*changed)();
    }

    Surroundings surroundings_;
    std::vector<SubscriptionUsageCard> cards_;
    UsageCardsModel cardsModel_;
    bool isShown_ = false;
    bool isEmpty_ = true;
    bool canReorder_ = false;
    double listHeight_;
    QString sendingText_;
    bool isSendingFailure_ = false;
    QTimer modelChanged_{this};
    QTimer period_{this};
    QTimer countdown_{this};
};

}  // namespace brimwatch
