#include "platform/linux/codex_process.h"

#include <QObject>
#include <QSocketNotifier>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "codex/codex_conversation.h"
#include "platform/linux/child_reaper.h"
#include "platform/linux/event_loop_wait.h"
#include "platform/posix/boot_timer.h"
#include "platform/posix/child_process.h"

namespace brimwatch {
namespace {

using Failure = CodexPoller::Failure;

// What a pipe holds.
constexpr std::size_t readBytes = 64U << 10U;

CodexReadResult failed(CodexReadFailure failure) {
    return tl::unexpected(std::move(failure));
}

// A conversation with a child that runs. Its end is that of the child.
class Exchange {
  public:
    Exchange(ChildProcess child, FileDescriptor timer)
        : child_(std::move(child)),
          timer_(std::move(timer)),
          output_(child_.outputDescriptor(), QSocketNotifier::Read),
          timeOut_(timer_.get(), QSocketNotifier::Read) {
        QObject::connect(&output_, &QSocketNotifier::activated, &context_, [this] { receive(); });
        QObject::connect(&timeOut_, &QSocketNotifier::activated, &context_, [this] {
            finish(failed(Failure{Failure::Kind::timedOut, {}}));
        });
        send(CodexConversation::greeting());
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    ~Exchange() {
        stopListening();
        endChild(std::move(child_));
    }

    EventLoopWait& wait() { return wait_; }
    // Once the wait is over.
    const CodexReadResult& result() const { return *result_; }

  private:
    // All that is ever sent is far shorter than the shortest pipe, so it never has to wait.
    void send(std::string_view bytes) {
        if (bytes.empty()) return;
        const std::error_code error = child_.write(bytes);
        if (error) finish(failed(error));
    }

    void receive() {
        const tl::expected<std::size_t, std::error_code> count = child_.read(buffer_);
        if (!count) {
            if (count.error() != std::errc::resource_unavailable_try_again) {
                finish(failed(count.error()));
            }
        } else if (*count == 0) {
            conversation_.receiveEnd();
        } else {
            send(conversation_.receive(std::string_view(buffer_.data(), *count)));
        }
        if (const std::optional<CodexConversation::Outcome>& outcome = conversation_.outcome()) {
            finish(outcome->map_error(
                [](const Failure& failure) { return CodexReadFailure(failure); }));
        }
    }

    void finish(CodexReadResult result) {
        keep(std::move(result));
        wait_.end();
    }

    void cancel() { keep(failed(std::make_error_code(std::errc::operation_canceled))); }

    // The first result stays.
    void keep(CodexReadResult result) {
        if (result_) return;
        result_ = std::move(result);
        stopListening();
    }

    void stopListening() {
        output_.setEnabled(false);
        timeOut_.setEnabled(false);
    }

    ChildProcess child_;
    FileDescriptor timer_;
    CodexConversation conversation_;
    std::optional<CodexReadResult> result_;
    std::array<char, readBytes> buffer_{};
    QSocketNotifier output_;
    QSocketNotifier timeOut_;
    EventLoopWait wait_{[this] { cancel(); }};
    QObject context_;  // what is connected to this goes with it
};

std::vector<const char*> withCodexHome(Environment environment, const std::string& assignment) {
    constexpr std::string_view name = "CODEX_HOME=";
    std::vector<const char*> entries;
    for (const char* const* entry = environment.entries(); *entry != nullptr; ++entry) {
        if (!std::string_view(*entry).starts_with(name)) entries.push_back(*entry);
    }
    entries.push_back(assignment.c_str());
    entries.push_back(nullptr);
    return entries;
}

tl::expected<ChildProcess, std::error_code> launchAppServer(const CodexReadRequest& request) {
    ChildProcessRequest child{.executable = request.executable,
                              .arguments = {"app-server"},
                              .workingFolder = request.accountFolder,
                              .environment = request.environment.entries(),
                              .defaultSignals = request.defaultSignals};
    if (!request.accountFolder) return ChildProcess::launch(child);
    const std::string assignment = "CODEX_HOME=" + *request.accountFolder;
    const std::vector<const char*> environment = withCodexHome(request.environment, assignment);
    child.environment = environment.data();
    return ChildProcess::launch(child);
}

}  // namespace

QCoro::Task<CodexReadResult> readCodex(CodexReadRequest request) {
    tl::expected<FileDescriptor, std::error_code> timer = startBootTimer(request.timeOut);
    if (!timer) co_return failed(timer.error());
    tl::expected<ChildProcess, std::error_code> child = launchAppServer(request);
    if (!child) co_return failed(child.error());
    Exchange exchange(*std::move(child), *std::move(timer));
    const EventLoopWait::End end(exchange.wait());
    co_await end;
    co_return exchange.result();
}

}  // namespace brimwatch
