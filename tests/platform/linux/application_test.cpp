#include "platform/linux/application_test.h"

#include <QThread>
#include <chrono>
#include <filesystem>

namespace brimwatch::test {

std::set<int> openDescriptors() {
    std::set<int> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int descriptor = std::stoi(entry.path().filename().string());
        std::error_code error;
        const auto target = std::filesystem::read_symlink(entry.path(), error);
        // Not the one that lists them.
        if (!error && !target.string().ends_with("/fd")) descriptors.insert(descriptor);
    }
    return descriptors;
}

void ApplicationTest::SetUp() {
    application_.emplace(argumentCount_, arguments_);
    QCoreApplication::processEvents();
    descriptorsBefore_ = openDescriptors();
}

void ApplicationTest::TearDown() {
    if (application_) {
        EXPECT_EQ(openDescriptors(), descriptorsBefore_);
    }
    application_.reset();
}

bool ApplicationTest::eventually(const std::function<bool()>& condition) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (Clock::now() > end) return false;
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
    return true;
}

void ApplicationTest::settle() {
    constexpr int turns = 20;
    for (int turn = 0; turn < turns; ++turn)
        QCoreApplication::processEvents();
}

}  // namespace brimwatch::test
