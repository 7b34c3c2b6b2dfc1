// Tests with an application and an event loop of their own, which leave no descriptor open.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <functional>
#include <optional>
#include <set>
#include <string>

namespace brimwatch::test {

std::set<int> openDescriptors();

class ApplicationTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Lets the event loop run until then, for ten seconds at most.
    static bool eventually(const std::function<bool()>& condition);
    // Lets the event loop deal with all that is there by now, and with what follows from it.
    static void settle();

    std::optional<QCoreApplication> application_;

  private:
    int argumentCount_ = 1;
    std::string name_ = "linux_test";
    char* arguments_[2] = {name_.data(), nullptr};
    std::set<int> descriptorsBefore_;
};

}  // namespace brimwatch::test
