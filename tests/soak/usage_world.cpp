#include "usage_world.h"

#include <algorithm>
#include <cmath>

namespace brimwatch::test {
namespace {

constexpr std::int64_t fiveHours = 5 * 3600;
constexpr std::int64_t week = 7 * 86400;

double rounded(double used) {
    return std::round(used * 1000) / 1000;
}

}  // namespace

UsageWorld::UsageWorld(Random& random, std::int64_t nowSeconds,
                       const std::vector<std::string>& keys)
    : random_(random), now_(nowSeconds) {
    for (const std::string& key : keys) {
        Account account;
        account.key = key;
        startCycle(account.windows, "five_hour", random_.between(600, fiveHours));
        startCycle(account.windows, "seven_day", random_.between(3600, week));
        account.sessions.assign(3, account.windows);
        accounts_.push_back(account);
    }
}

void UsageWorld::startCycle(LimitsFile::Windows& windows, const std::string& key,
                            std::int64_t seconds) {
    windows[key] = {.usedPercentage = 0, .resetsAt = now_ + seconds};
}

void UsageWorld::advance(std::chrono::seconds duration) {
    now_ += duration.count();
    for (Account& account : accounts_) {
        if (random_.oneIn(200)) account.isBusy = !account.isBusy;
        if (*account.windows["five_hour"].resetsAt <= now_) {
            startCycle(account.windows, "five_hour", fiveHours);
        }
        if (*account.windows["seven_day"].resetsAt <= now_) {
            startCycle(account.windows, "seven_day", week);
        }
        if (!account.isBusy) continue;
        const double rise = static_cast<double>(random_.below(400)) / 1000;
        double& fiveHour = account.windows["five_hour"].usedPercentage;
        double& sevenDay = account.windows["seven_day"].usedPercentage;
        fiveHour = rounded(std::min(fiveHour + rise, 100.0));
        sevenDay = rounded(std::min(sevenDay + rise / 20, 100.0));
    }
}

LimitsFile::Windows UsageWorld::report(Account& account) {
    LimitsFile::Windows& session = account.sessions[random_.below(account.sessions.size())];
    if (!random_.oneIn(3)) session = account.windows;
    LimitsFile::Windows reported = session;
    for (auto& [key, window] : reported) {
        if (window.resetsAt && random_.oneIn(4)) {
            *window.resetsAt += random_.between(-1500, 1500);
        }
        if (account.key == forgetfulAccount && random_.oneIn(40)) window.resetsAt.reset();
    }
    if (random_.oneIn(50)) reported.erase(random_.oneIn(2) ? "five_hour" : "seven_day");
    return reported;
}

CodexReadResult UsageWorld::answer(const Account& account) {
    using Kind = CodexPoller::Failure::Kind;
    if (random_.oneIn(20)) return codexFailure(Kind::timedOut);
    if (random_.oneIn(20)) return codexFailure(Kind::server);
    if (random_.oneIn(50)) return codexSystemError(std::errc::no_such_file_or_directory);
    CodexPoller::Reading reading;
    reading.windows = account.windows;
    reading.planType = account.codexPlan;
    return reading;
}

}  // namespace brimwatch::test
