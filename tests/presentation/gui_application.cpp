// The application of all tests of one program; there can be only one after the other, and Qt Quick
// does not outlive the first.

#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>
#include <memory>

namespace brimwatch::test {
namespace {

class GuiApplication : public ::testing::Environment {
  public:
    void SetUp() override {
        application_ = std::make_unique<QGuiApplication>(argumentCount_, arguments_);
        QGuiApplication::setQuitOnLastWindowClosed(false);
        QAccessible::setActive(true);
    }
    void TearDown() override { application_.reset(); }

  private:
    int argumentCount_ = 1;
    char programName_[11] = "views_test";
    char* arguments_[2] = {programName_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

[[maybe_unused]] const auto* const application =
    ::testing::AddGlobalTestEnvironment(new GuiApplication);

}  // namespace
}  // namespace brimwatch::test
