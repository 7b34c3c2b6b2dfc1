#include "platform/linux/appcast_update_engine.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QSysInfo>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/ed25519_signature.h"
#include "platform/linux/update_choice.h"
#include "platform/linux/update_preparation.h"
#include "platform/posix/retry.h"
#include "platform/spawn.h"

namespace brimwatch {
namespace {

using Phase = UpdateStatus::Phase;
using std::chrono::seconds;

constexpr seconds usualInterval{86'400};
constexpr seconds shortestInterval{3600};
constexpr seconds leeway{15};
constexpr std::chrono::hours longestDownload{1};
constexpr std::int64_t downloadLimit = std::int64_t{1} << 30U;

QByteArray userAgentOf(const BundleInfo& info) {
    return "Brimwatch/" + QByteArray::fromStdString(info.shortVersion);
}

// Full steps of a hundred, so that a status is not told of for every piece that comes.
double fractionOf(std::int64_t part, std::int64_t whole) {
    constexpr double steps = 100;
    return std::floor(static_cast<double>(part) * steps / static_cast<double>(whole)) / steps;
}

}  // namespace

// An update that is made ready on a thread of its own.
class AppcastUpdateEngine::Preparation {
  public:
    Preparation(PreparationOrder order, FileDescriptor file, const VersionFolders& folders,
                UnpackUpdate& unpack, std::function<void()> finished)
        : thread_(QThread::create([this, order = std::move(order), folders, &unpack] {
              result_ = prepareUpdate(order, file_, folders, unpack, isCancelled_);
          })),
          file_(std::move(file)) {
        QObject::connect(thread_.get(), &QThread::finished, &context_, std::move(finished));
        thread_->start();
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;
    ~Preparation() {
        isCancelled_ = true;
        thread_->wait();
    }

    tl::expected<void, UpdateFailure> result() {
        thread_->wait();
        return result_;
    }

  private:
    std::unique_ptr<QThread> thread_;
    FileDescriptor file_;
    std::atomic<bool> isCancelled_ = false;
    tl::expected<void, UpdateFailure> result_;
    QObject context_;
};

AppcastUpdateEngine::AppcastUpdateEngine(UpdateDelegate& delegate, Setup setup)
    : delegate_(delegate),
      setup_(std::move(setup)),
      state_(setup_.files, setup_.stateFolder),
      interval_(usualInterval) {
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &AppcastUpdateEngine::putInPlaceAtQuit);
}

AppcastUpdateEngine::~AppcastUpdateEngine() = default;

std::optional<UpdateUnavailability> AppcastUpdateEngine::unavailability() const {
    if (!setup_.folders) return UpdateUnavailability::managedElsewhere;
    if (!isEd25519Key(setup_.info.publicUpdateSigningKey))
        return UpdateUnavailability::noSigningKey;
    if (feedURL().empty()) return UpdateUnavailability::noFeed;
    return std::nullopt;
}

void AppcastUpdateEngine::setHttpHeaders(std::map<std::string, std::string> headers) {
    headers_ = std::move(headers);
}

void AppcastUpdateEngine::setUpdateCheckInterval(std::chrono::seconds interval) {
    interval_ = std::max(interval, shortestInterval);
}

void AppcastUpdateEngine::setAutomaticallyChecksForUpdates(bool value) {
    if (state_.automaticallyChecks() != value) state_.setAutomaticallyChecks(value);
}

void AppcastUpdateEngine::setAutomaticallyDownloadsUpdates(bool value) {
    if (state_.automaticallyDownloads() != value) state_.setAutomaticallyDownloads(value);
}

std::string AppcastUpdateEngine::feedURL() const {
    return delegate_.feedURL().value_or(setup_.info.publicUpdateFeed);
}

void AppcastUpdateEngine::start() {
    if (!unavailability()) spawn(keepSchedule(this, setup_.sleep));
}

QCoro::Task<> AppcastUpdateEngine::keepSchedule(QPointer<AppcastUpdateEngine> engine, Sleep sleep) {
    std::chrono::milliseconds pause = engine->untilNextCheck();
    while (true) {
        const SleepEnd end = co_await sleep(pause);
        if (end == SleepEnd::cancelled || !engine) co_return;
        const bool isDue = engine->untilNextCheck() <= leeway;
        if (isDue && engine->automaticallyChecksForUpdates() && !engine->isUnderWay())
            engine->beginCheck(UpdateCheck::inBackground);
        // A check that failed is due again, but not at once.
        pause = std::max<std::chrono::milliseconds>(engine->untilNextCheck(), shortestInterval);
    }
}

std::chrono::milliseconds AppcastUpdateEngine::untilNextCheck() {
    const Instant now = setup_.now();
    // As if it had been just now, where the clock was ahead at that time.
    if (state_.lastCheck() && *state_.lastCheck() > now) state_.setLastCheck(now);
    if (!state_.lastCheck()) return std::chrono::milliseconds(0);
    const double age = unixSeconds(now) - unixSeconds(*state_.lastCheck());
    const auto interval = static_cast<double>(interval_.count());
    constexpr double milliseconds = 1000;
    return std::chrono::milliseconds(
        static_cast<std::int64_t>(std::max(interval - age, 0.0) * milliseconds));
}

bool AppcastUpdateEngine::isUnderWay() const {
    return status_.phase == Phase::checking || status_.phase == Phase::downloading ||
           status_.phase == Phase::preparing || status_.phase == Phase::installing;
}

void AppcastUpdateEngine::checkForUpdates() {
    if (unavailability()) return;
    if (isUnderWay()) {
        check_ = UpdateCheck::byUser;
    } else {
        beginCheck(UpdateCheck::byUser);
    }
}

void AppcastUpdateEngine::beginCheck(UpdateCheck check) {
    check_ = check;
    consent_ = Consent::none;
    checkBegan_ = setup_.now();
    feed_.clear();
    item_.reset();
    become({.phase = Phase::checking});
    network_ = std::make_unique<QNetworkAccessManager>();
    fetch_ = std::make_unique<UpdateFetch>(
        *network_, UpdateFetch::Order{
                       .request = {.url = feedURL(), .headers = headers_},
                       .permit = [](UpdateRequest&) { return true; },
                       .take =
                           [this](const QByteArray& bytes) {
                               feed_ += bytes;
                               return true;
                           },
                       .done = [this](UpdateFetch::End end) { feedFetched(end); },
                       .byteLimit = appcastSizeLimit,
                       .userAgent = userAgentOf(setup_.info),
                   });
}

void AppcastUpdateEngine::feedFetched(UpdateFetch::End end) {
    fetch_.reset();
    network_.reset();
    if (end == UpdateFetch::End::rejected) return fail(UpdateFailure::feed);
    if (end != UpdateFetch::End::fetched) return fail(UpdateFailure::network);
    const auto items = parseAppcast(std::exchange(feed_, {}), feedURL(), setup_.language);
    if (!items) return fail(UpdateFailure::feed);
    state_.setLastCheck(checkBegan_);
    const UpdateConditions conditions{
        .runningVersion = setup_.info.version,
        .readyVersion = ready_ ? std::optional(ready_->update.version) : std::nullopt,
        .processor = QSysInfo::currentCpuArchitecture().toStdString(),
        .check = check_,
        .skippedVersion = state_.skippedVersion(),
        .rolloutGroup = state_.rolloutGroup(),
        .now = setup_.now()};
    std::optional<AppcastItem> item = chooseUpdate(*items, conditions);
    if (item) return considerItem(*std::move(item));
    if (check_ == UpdateCheck::byUser && !ready_) return become({.phase = Phase::upToDate});
    settle();
}

void AppcastUpdateEngine::considerItem(AppcastItem item) {
    item_ = std::move(item);
    const auto answer = delegate_.shouldProceed(item_->update, check_);
    if (!answer) return fail(UpdateFailure::refused, answer.error());
    const bool isSilent = check_ == UpdateCheck::inBackground && state_.automaticallyDownloads() &&
                          isSilentFor(*item_, setup_.info.version);
    isSilent ? beginDownload(Consent::none) : showItem();
}

void AppcastUpdateEngine::showItem() {
    const UpdateItem item = item_->update;
    const bool isShown =
        check_ == UpdateCheck::byUser || delegate_.shouldHandleShowingScheduledUpdate(item, false);
    delegate_.willHandleShowingUpdate(isShown, item, UpdateStage::notDownloaded);
    become(statusOfItem(Phase::found));
}

UpdateStatus AppcastUpdateEngine::statusOfItem(Phase phase) const {
    UpdateStatus status{.phase = phase, .displayVersion = item_->update.displayVersion};
    status.isInformational = isInformationalFor(*item_, setup_.info.version);
    status.infoURL = item_->update.infoURL;
    if (item_->update.releaseNotesURL && delegate_.shouldDownloadReleaseNotes(item_->update))
        status.releaseNotesURL = item_->update.releaseNotesURL;
    return status;
}

void AppcastUpdateEngine::install() {
    if (status_.phase == Phase::found && !status_.isInformational)
        beginDownload(Consent::given);
    else if (status_.phase == Phase::ready)
        installReady();
    else if (status_.phase == Phase::downloading || status_.phase == Phase::preparing)
        consent_ = Consent::given;
}

void AppcastUpdateEngine::skip() {
    if (status_.phase != Phase::found) return;
    state_.setSkippedVersion(item_->update.version);
    settle();
}

void AppcastUpdateEngine::beginDownload(Consent consent) {
    consent_ = consent;
    const std::int64_t length = item_->length;
    if (length <= 0 || length > downloadLimit) return fail(UpdateFailure::download);
    FileResult<FileDescriptor> file = setup_.folders->makeUnnamedFile();
    if (!file) return fail(UpdateFailure::disk);
    download_ = *std::move(file);
    downloadedBytes_ = 0;
    become(statusOfItem(Phase::downloading));
    network_ = std::make_unique<QNetworkAccessManager>();
    fetch_ = std::make_unique<UpdateFetch>(
        *network_, UpdateFetch::Order{
                       .request = {.url = *item_->update.fileURL, .headers = headers_},
                       .permit = [this](UpdateRequest& request) { return permitDownload(request); },
                       .take = [this](const QByteArray& bytes) { return takeDownload(bytes); },
                       .done = [this](UpdateFetch::End end) { downloadFetched(end); },
                       .byteLimit = length,
                       .whole = longestDownload,
                       .userAgent = userAgentOf(setup_.info),
                   });
}

// A delegate that leads the request elsewhere wants no archive from there: that address is of
// another kind.
bool AppcastUpdateEngine::permitDownload(UpdateRequest& request) {
    const std::string wanted = request.url;
    delegate_.willDownload(item_->update, request);
    return request.url == wanted;
}

bool AppcastUpdateEngine::takeDownload(const QByteArray& bytes) {
    const char* from = bytes.constData();
    auto left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const ssize_t count =
            retryOnInterrupt([&] { return ::write(download_.get(), from, left); });
        if (count <= 0) {
            download_.close();
            return false;
        }
        from += count;
        left -= static_cast<std::size_t>(count);
    }
    downloadedBytes_ += bytes.size();
    UpdateStatus status = status_;
    status.downloadedFraction = fractionOf(downloadedBytes_, item_->length);
    become(std::move(status));
    return true;
}

void AppcastUpdateEngine::downloadFetched(UpdateFetch::End end) {
    fetch_.reset();
    network_.reset();
    if (!download_.isOpen()) return fail(UpdateFailure::disk);
    if (end == UpdateFetch::End::refused) return fail(UpdateFailure::refused);
    const bool isWhole = end == UpdateFetch::End::fetched && downloadedBytes_ == item_->length;
    if (!isWhole) return fail(UpdateFailure::download);
    beginPreparation();
}

void AppcastUpdateEngine::beginPreparation() {
    become(statusOfItem(Phase::preparing));
    preparation_ = std::make_unique<Preparation>(
        PreparationOrder{.version = item_->update.version,
                         .signature = item_->signature,
                         .publicKey = setup_.info.publicUpdateSigningKey,
                         .bundleIdentifier = setup_.info.bundleIdentifier,
                         .runningVersion = setup_.info.version,
                         .readyVersion = ready_ ? ready_->update.version : std::string()},
        std::exchange(download_, {}), *setup_.folders, *setup_.unpack,
        [this] { preparationFinished(); });
}

void AppcastUpdateEngine::preparationFinished() {
    const auto result = preparation_->result();
    preparation_.reset();
    if (!result) return fail(result.error());
    ready_ = item_;
    become(statusOfItem(Phase::ready));
    if (consent_ == Consent::given) return installReady();
    const auto installNow = [engine = QPointer<AppcastUpdateEngine>(this)] {
        if (engine) engine->installReady();
    };
    const UpdateItem item = ready_->update;
    if (!delegate_.willInstallOnQuit(item, installNow))
        delegate_.willHandleShowingUpdate(true, item, UpdateStage::downloaded);
}

void AppcastUpdateEngine::installReady() {
    if (!ready_ || isInPlace_) return;
    item_ = ready_;
    become(statusOfItem(Phase::installing));
    check_ = UpdateCheck::byUser;
    if (!setup_.folders->switchTo(ready_->update.version)) return fail(UpdateFailure::disk);
    isInPlace_ = true;
    if (!setup_.relaunch()) fail(UpdateFailure::relaunch);
}

void AppcastUpdateEngine::putInPlaceAtQuit() {
    if (ready_ && !isInPlace_)
        isInPlace_ = setup_.folders->switchTo(ready_->update.version).has_value();
}

void AppcastUpdateEngine::become(UpdateStatus status) {
    if (status_ == status) return;
    status_ = std::move(status);
    emit statusChanged();
}

// What nobody asked for fails in silence.
void AppcastUpdateEngine::fail(UpdateFailure failure, const std::string& refusal) {
    download_.close();
    if (check_ == UpdateCheck::inBackground && consent_ == Consent::none) return settle();
    UpdateStatus status =
        item_ ? statusOfItem(Phase::failed) : UpdateStatus{.phase = Phase::failed};
    status.failure = failure;
    status.refusal = refusal;
    become(std::move(status));
}

void AppcastUpdateEngine::settle() {
    item_ = ready_;
    become(ready_ ? statusOfItem(Phase::ready) : UpdateStatus());
}

}  // namespace brimwatch
