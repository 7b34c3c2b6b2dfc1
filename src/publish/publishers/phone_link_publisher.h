// Sends the limits to an Android phone, which got the key by hand.
//
// The link begins when the user looks at the key, and is paused, renewed or ended by him. It is
// handed the limits after each reload and decides itself whether to send; while it is paused or
// changing it keeps the latest ones. One send at a time; whatever takes something back waits for
// it. It may be destroyed at any time: a send stops, a removal that has begun runs to its end.
//
// Each observed field has a signal, sent synchronously after each real change. Main thread.
#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "limits/subscription_limits.h"
#include "platform/record_database.h"
#include "platform/settings_store.h"
#include "platform/sleep.h"
#include "platform/task_end.h"
#include "publish/mac_id.h"
#include "publish/phone_key_store.h"
#include "publish/publish_schedule.h"
#include "publish/publishers/phone_limits.h"
#include "publish/publishers/publication.h"
#include "publish/publishers/publication_failure.h"
#include "publish/publishers/record_save.h"
#include "publish/random_bytes.h"
#include "publish/symmetric_key.h"
#include "support/instant.h"

namespace brimwatch {

class PhoneLinkPublisher final : public QObject {
    Q_OBJECT

  public:
    struct NotLinked {
        bool operator==(const NotLinked&) const = default;
    };
    struct Paused {
        bool operator==(const Paused&) const = default;
    };
    using State = std::variant<publication::Waiting, publication::Sent, publication::Failed,
                               publication::NoAccount, publication::Unavailable,
                               PhoneLinkPublisher::NotLinked, PhoneLinkPublisher::Paused>;

    // What is referred to must outlive the publisher and all its calls.
    struct Surroundings {
        std::unique_ptr<PhoneKeyStore> store;
        SettingsStore* defaults = nullptr;  // without one the link is not paused at first
        PublishingRight right = PublishingRight::missing;
        std::function<Instant()> now;
        Sleep sleep;
        // Not used without the right.
        std::function<MacId()> macId = {};
        std::function<QCoro::Task<CloudRecord>(ShareToSave)> save = {};
        std::function<QCoro::Task<>(SymmetricKey)> deleteRecord = {};
        std::function<QCoro::Task<>(MacId, SymmetricKey)> removeMac = {};
        RandomBytes randomBytes = fillWithRandomBytes;
    };

    explicit PhoneLinkPublisher(Surroundings surroundings);

    // --- What is observed ---

    const State& state() const { return state_; }
    const std::optional<SymmetricKey>& key() const { return key_; }  // absent: not linked
    bool isChanging() const { return isChanging_; }
    bool isPaused() const { return isPaused_; }

    // --- What is not observed ---

    bool isSending() const { return sending_.has_value(); }
    const PublishSchedule& schedule() const { return schedule_; }

    // `locale` is that of the time, as in "ko" or "de_DE.UTF-8".
    static std::string displayText(const State& state, const std::string& locale);

    // The end of the send that it started; nothing if none was due. The send begins with the next
    // turn of the event loop.
    std::optional<TaskEnd> publish(std::vector<SubscriptionLimits> limits, Instant now);

    // Takes in what the key store holds; on failure, which is logged, the key stays. Not for times
    // in which it is changing.
    void refreshKey();

    // --- What the user does. Those that change the key do nothing while one of them runs. ---

    // Makes sure that there is a key, and goes on sending. Throws what the key store throws.
    void showLink();
    // The next limits are sent at once: what stood in the way has just been mended.
    void sendAnew();
    // Puts another key in the place of this one and deletes the former record, if it can. Throws
    // what the key store throws; the former key is in force then.
    QCoro::Task<> rotate();
    // Deletes the record, then the key. Throws what stops that; the link is in force then.
    QCoro::Task<> disconnect();
    // Stops sending and takes back what was sent; the key stays. Throws what stops the removal; it
    // is paused all the same.
    QCoro::Task<> pause();

  signals:
    void stateChanged();
    void keyChanged();
    void isChangingChanged();
    void isPausedChanged();

  private:
    struct Content {
        std::vector<SubscriptionLimits> limits;
        ContentDigest digest;
        SymmetricKey key;
        Instant now;
    };
    using Publisher = QPointer<PhoneLinkPublisher>;

    static QCoro::Task<> send(Publisher publisher, TaskEnd end, Content content);
    static QCoro::Task<> sendNow(Publisher publisher, Content content);
    static QCoro::Task<> endOfSend(Publisher publisher);
    static QCoro::Task<> deleteAll(Publisher publisher);

    bool canPublish() const { return surroundings_.right == PublishingRight::granted; }
    bool isCurrent() const { return !isPaused_ && !isChanging_; }
    bool isCurrentFor(const SymmetricKey& key) const { return isCurrent() && key_ == key; }
    State restingState() const;
    void noteSuccess(const Content& content, CloudRecord record);
    void noteFailure(const std::exception_ptr& thrown, Instant now);
    void startAnew();
    void publishLatest();
    void takeIn(const std::optional<SymmetricKey>& key);
    void setState(State state);
    void setChanging(bool isChanging);
    void setPaused(bool isPaused);

    Surroundings surroundings_;
    State state_;
    std::optional<SymmetricKey> key_;
    bool isChanging_ = false;
    bool isPaused_ = false;
    PublishSchedule schedule_;
    std::optional<CloudRecord> record_;  // as the last save gave it
    std::optional<TaskEnd> sending_;
    PhoneLimits phoneLimits_;
    std::optional<std::vector<SubscriptionLimits>> latest_;
};

}  // namespace brimwatch
