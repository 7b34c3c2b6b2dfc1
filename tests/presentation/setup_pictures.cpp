// Draws the settings with sample accounts into PNG files, to be looked at: setup_pictures FOLDER
//
// QT_SCALE_FACTOR=2 in its environment draws for dense screens.

#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QQuickView>
#include <functional>
#include <vector>

#include "presentation/views/quick_setup_window.h"
#include "quick_items.h"
#include "scene_pictures.h"
#include "setup_fixture.h"

namespace brimwatch::test {
namespace {

// Accounts in all states, with names long and short.
class SampleSettings final : public SetupFixture {
  public:
    void fill() {
        makeRegisteredFolder(".claude");
        makeRegisteredFolder(".claude-work");
        makeClaudeFolder(".claude-new");
        writeStatusLine(makeClaudeFolder(".claude-moved"), "'/gone/bin/brimwatch' --statusline");
        writeStatusLine(makeClaudeFolder(".claude-old"), "python3 ~/.brimwatch/brimwatch.py");
        makeCodexFolder(".codex");
        makeCodexFolder(".codex-review");
        writeLimits("claude-default", 10, 20);
        writeLimits("claude-work", 30, 40);
        writeLimits("codex-default", 50, 60);
        keys_.values["net.quillmoor.brimwatch.sync/limits-key-v1"] = keyFilledWith('c').bytes();
        keys_.values["net.quillmoor.brimwatch.sync/phone-key-v1"] = keyFilledWith('p').bytes();
        startWithPhones();
        model().setUsageName("claude-work", "팀에서 함께 쓰는 업무용 구독 계정의 아주 긴 이름");
        poll();
        answer(20);
        codex_.answer(codexFailure(Kind::noLimits));
        settleAll();
    }
    void withoutAccounts() { start(); }
    void withoutPhoneAccount() {
        database_.account = CloudAccountStatus::noAccount;
        fill();
        updates_.status = QStringLiteral("새 버전 1.4 설치할 수 있어요.");
        updates_.installable = updates_.skippable = updates_.page = true;
    }
    void removed() {
        start();
        removeEverything();
        settleAll();
    }
    void withoutUpdates() {
        fill();
        updates_.available = false;
        updates_.unavailability =
            QStringLiteral("이 설치는 시스템의 패키지 관리자가 업데이트해요.");
    }
    HelperModel& shownModel() { return model(); }
    SetupViewModel& settings() { return makeSettings(); }

  private:
    void TestBody() override {}
};

struct Scene {
    QString name;
    std::function<void(SampleSettings&)> prepare;
    double textScale = 1;
    // What is pressed, by its identifier; nothing if empty.
    const char* pressed = nullptr;
    double screenHeight = 4000;
    bool fails = false;
};

std::vector<Scene> scenes() {
    const auto filled = [](SampleSettings& sample) { sample.fill(); };
    return {
        {QStringLiteral("all"), filled},
        {QStringLiteral("first-run"), [](SampleSettings& sample) { sample.withoutAccounts(); }},
        {QStringLiteral("removed"), [](SampleSettings& sample) { sample.removed(); }},
        {QStringLiteral("sign-in"), [](SampleSettings& sample) { sample.withoutPhoneAccount(); }},
        {QStringLiteral("no-updates"), [](SampleSettings& sample) { sample.withoutUpdates(); }},
        {QStringLiteral("window"), filled, 1, nullptr, 800},
        {QStringLiteral("text-1.5"), filled, 1.5},
        {QStringLiteral("text-2"), filled, 2},
        {QStringLiteral("rename"), filled, 1, "usageName.edit.claude-work", 800},
        {QStringLiteral("rename-2"), filled, 2, "usageName.edit.claude-work", 800},
        {QStringLiteral("add"), filled, 1, "claude.addAccount", 800},
        {QStringLiteral("add-2"), filled, 2, "claude.addAccount", 800},
        {QStringLiteral("removal"), filled, 1, "settings.removeEverything", 800},
        {QStringLiteral("help"), filled, 1, "help", 800},
        {QStringLiteral("help-2"), filled, 2, "help", 800},
        {QStringLiteral("picker"), filled, 1, "settings.appTheme", 800},
        {QStringLiteral("failure"), filled, 1, nullptr, 800, true},
    };
}

void letLoopRun() {
    for (int turn = 0; turn < 50; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

void press(QuickSetupWindow& window, const char* identifier) {
    QQuickItem* item = findItem(window.window()->rootObject(), identifier);
    if (item == nullptr) return;
    item->forceActiveFocus();
    if (!QMetaObject::invokeMethod(item, "clicked"))
        QMetaObject::invokeMethod(item->property("popup").value<QObject*>(), "open");
}

QImage draw(const Scene& scene, Appearance appearance) {
    SampleSettings sample;
    scene.prepare(sample);
    QuickSetupWindow window({.settings = sample.settings(), .screen = [&scene] {
                                 return std::optional(QRect(0, 0, 1280, int(scene.screenHeight)));
                             }});
    window.setAppearance(appearance);
    window.setTextScale(scene.textScale);
    window.show(nullptr);
    if (window.window() == nullptr) return {};
    letLoopRun();
    if (scene.pressed != nullptr) press(window, scene.pressed);
    if (scene.fails) sample.shownModel().connectClaude();
    letLoopRun();
    return window.window()->grabWindow();
}

}  // namespace
}  // namespace brimwatch::test

int main(int count, char** arguments) {
    using namespace brimwatch::test;
    return drawOnCommand(count, arguments,
                         [](const QString& folder) { return drawScenes(folder, scenes(), draw); });
}
