#include "app/second_start.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/linux/instance_activation.h"

namespace brimwatch {

tl::expected<std::optional<Application::Claim>, Application::Refusal> claimOrGiveWay(
    const Environment& environment, std::chrono::milliseconds longestWait) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds pause{100};
    const Clock::time_point end = Clock::now() + longestWait;
    while (true) {
        tl::expected<Application::Claim, Application::Refusal> claim =
            Application::claim(environment);
        if (claim) return *std::move(claim);
        if (claim.error().reason != Application::Refusal::Reason::isRunning)
            return tl::unexpected(std::move(claim).error());
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left <= std::chrono::milliseconds::zero())
            return tl::unexpected(std::move(claim).error());
        const InstanceAnswer answer = activateRunningInstance(environment, left);
        if (answer == InstanceAnswer::activated) return std::nullopt;
        if (answer == InstanceAnswer::noBus) return tl::unexpected(std::move(claim).error());
        std::this_thread::sleep_for(std::min(pause, left));
    }
}

}  // namespace brimwatch
