// Sends the limits to the user's iPhones: its share of the record that all computers with the
// shared key write to.
//
// It is handed the limits after each reload and decides itself whether to send. One send and one
// removal at a time; a removal waits for the send. A send that is no longer wanted notices that at
// each step and changes nothing any more. It may be destroyed at any time: a send stops, a removal
// runs to its end.
//
// Each observed field has a signal, sent synchronously after each real change. Main thread.
#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "limits/subscription_limits.h"
#include "platform/record_database.h"
#include "platform/settings_store.h"
#include "platform/sleep.h"
#include "platform/task_end.h"
#include "publish/publish_schedule.h"
#include "publish/publishers/publication.h"
#include "publish/publishers/publication_failure.h"
#include "publish/publishers/record_save.h"
#include "publish/symmetric_key.h"
#include "support/instant.h"

namespace brimwatch {

class CloudPublisher final : public QObject {
    Q_OBJECT

  public:
    struct Off {
        bool operator==(const Off&) const = default;
    };
    using State =
        std::variant<publication::Waiting, publication::Sent, publication::Failed,
                     publication::NoAccount, publication::Unavailable, CloudPublisher::Off>;

    // What is referred to must outlive the publisher and all its calls.
    struct Surroundings {
        SettingsStore* defaults = nullptr;  // without one the channel is on at first
        PublishingRight right = PublishingRight::missing;
        std::function<Instant()> now;
        Sleep sleep;
        // Not used without the right.
        std::function<SymmetricKey()> loadKey = {};
        std::function<QCoro::Task<CloudRecord>(ShareToSave)> save = {};
        std::function<QCoro::Task<>()> remove = {};
    };

    explicit CloudPublisher(Surroundings surroundings);

    // --- What is observed ---

    const State& state() const { return state_; }
    bool isEnabled() const { return isEnabled_; }
    bool isRemoving() const { return removal_.has_value(); }

    // --- What is not observed ---

    bool isSending() const { return sending_.has_value(); }
    const PublishSchedule& schedule() const { return schedule_; }

    // `locale` is that of the time, as in "ko" or "de_DE.UTF-8".
    static std::string displayText(const State& state, const std::string& locale);

    // The end of the send that it started; nothing if none was due. The send begins with the next
    // turn of the event loop.
    std::optional<TaskEnd> publish(std::vector<SubscriptionLimits> limits, Instant now);

    // Nothing happens during a removal.
    void switchOn();
    // Takes back what was sent. A second call waits for the first one and ends as that does. Throws
    // what stops the removal; the channel is off all the same.
    QCoro::Task<> switchOff();

  signals:
    void stateChanged();
    void isEnabledChanged();
    void isRemovingChanged();

  private:
    struct Content {
        std::vector<SubscriptionLimits> limits;
        ContentDigest digest;
        std::int64_t revision;
    };
    using Publisher = QPointer<CloudPublisher>;

    static QCoro::Task<> send(Publisher publisher, TaskEnd end, Content content);
    static QCoro::Task<> sendNow(Publisher publisher, Content content, Instant now);
    static QCoro::Task<> removeNow(Publisher publisher, TaskEnd end);
    static QCoro::Task<> withdraw(Publisher publisher);

    bool isAvailable() const;
    bool isCurrent(std::int64_t revision) const;
    void noteSuccess(const Content& content, CloudRecord record, Instant now);
    void noteFailure(const PublicationFailure& failure, Instant now);
    void show(const publication_failure::Stopped& failure);
    void show(const publication_failure::NoAccount& failure);
    void show(const publication_failure::SharedKeyRefused& failure);
    void show(const publication_failure::Other& failure);
    void show(const CloudError& error);
    void finishSend(std::int64_t revision);
    void setState(State state);
    void setEnabled(bool isEnabled);

    Surroundings surroundings_;
    State state_;
    bool isEnabled_;
    PublishSchedule schedule_;
    std::optional<CloudRecord> record_;  // as the last save gave it
    std::optional<TaskEnd> sending_;
    std::optional<TaskEnd> removal_;
    std::optional<std::vector<SubscriptionLimits>> latest_;
    std::int64_t revision_ = 0;  // raised by each removal; a send of another one is outdated
};

}  // namespace brimwatch
