#include "app/desktop.h"

#include <unistd.h>

#include <QDesktopServices>
#include <QGuiApplication>
#include <QScreen>
#include <chrono>
#include <vector>

#include "app/popover_library.h"
#include "app/program_path.h"
#include "app/unpacking_library.h"
#include "platform/linux/boot_sleep.h"
#include "platform/posix/executable_path.h"
#include "platform/posix/wall_clock.h"
#include "presentation/menu_bar_rocket.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

double uptime() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::vector<double> screenHeights() {
    std::vector<double> heights;
    for (const QScreen* screen : QGuiApplication::screens())
        heights.push_back(screen->availableGeometry().height());
    return heights;
}

// Who has signed in has to get back.
bool canSignIn(Application& application) {
    return !ownBundleInfo(application.files()).cloudSignInRedirect.empty();
}

bool isApplicationActive() {
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

}  // namespace

Desktop::Desktop(Application& application, const Environment& environment)
    : sessionBus_(sessionBusAddress(environment)),
      systemBus_(systemBusAddress(environment)),
      appearance_(sessionBus_, application.files(),
                  configFolder(environment, application.files(), ::getuid())),
      session_(sessionBus_, systemBus_, LoginSession::thisProcess(environment)),
      item_(environment, appearance_),
      fileManager_(sessionBus_, QDesktopServices::openUrl),
      folderPicker_(sessionBus_, qtFolderPicker_),
      updates_({.files = application.files(),
                .keys = application.keys(),
                .info = ownBundleInfo(application.files()),
                .stateFolder = application.stateFolder(),
                .desktopProgram = resolvedExecutablePath().value_or(std::string()),
                .command = application.executable(),
                .locale = application.locale(),
                .unpack = unpackByLibrary,
                .activateApplication = [this] { delegate_.showUpdates(); },
                .quit = [] { QCoreApplication::quit(); }}),
      delegate_({.model = application.model(),
                 .defaults = application.defaults(),
                 .item = item_,
                 .session = session_,
                 .appearance = appearance_,
                 .clipboard = clipboard_,
                 .fileManager = fileManager_,
                 .folderPicker = folderPicker_,
                 .timer = frameTimer_,
                 .now = wallClock,
                 .uptime = uptime,
                 .locale = application.locale(),
                 .screenHeights = screenHeights,
                 .rocket = sharedRocket(),
                 .makePopover = [this](auto& content) { return loadPopover(content, appearance_); },
                 .makePhoneLinkWindow =
                     [this](auto& sheet) { return loadPhoneLinkWindow(sheet, appearance_); },
                 .makeSetupWindow =
                     [this](auto& settings) { return loadSetupWindow(settings, appearance_); },
                 .canSignIn = [canSignIn = canSignIn(application)] { return canSignIn; },
                 .signIn = [&application] { application.accountSignIn().start(); },
                 .openPage = QDesktopServices::openUrl,
                 .sleep = sleepFor,
                 .quit = [] { QCoreApplication::quit(); },
                 .updater = updates_.updater(),
                 .isApplicationActive = isApplicationActive}),
      activation_(sessionBus_) {
    QObject::connect(&activation_, &InstanceActivation::activated, &delegate_,
                     &AppDelegate::reopen);
    sessionBus_.open();
    systemBus_.open();
    delegate_.didFinishLaunching();
}

}  // namespace brimwatch
