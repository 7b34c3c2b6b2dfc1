// Tests with widgets and with a message bus of their own.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QStringList>
#include <QThread>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/bus_connection.h"
#include "platform/linux/fake_service.h"
#include "platform/linux/private_bus.h"

namespace brimwatch::test {

class FoldersTest : public ::testing::Test {
  protected:
    void SetUp() override {
        application_ = std::make_unique<QApplication>(argumentCount_, arguments_);
        QApplication::setQuitOnLastWindowClosed(false);
        bus_ = std::make_unique<BusConnection>(daemon_.address());
        bus_->open();
        ASSERT_TRUE(bus_->isConnected());
    }
    void TearDown() override {
        bus_.reset();
        application_.reset();
    }

    // Lets the event loop run until then, for ten seconds at most.
    static bool eventuallyInLoop(const std::function<bool()>& condition) {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (Clock::now() > end) return false;
            QCoreApplication::processEvents();
            QThread::msleep(2);
        }
        return true;
    }

    // A service that others see.
    std::unique_ptr<FakeService> own(const QString& name) {
        auto service = std::make_unique<FakeService>(daemon_.address());
        service->own(name);
        return service;
    }

    PrivateBus daemon_;
    std::unique_ptr<BusConnection> bus_;  // open

  private:
    int argumentCount_ = 1;
    char programName_[13] = "folders_test";
    char* arguments_[2] = {programName_, nullptr};
    std::unique_ptr<QApplication> application_;
};

}  // namespace brimwatch::test
