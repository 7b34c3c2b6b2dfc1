// The desktop that the program lives on: its buses, its panel and its windows, and what joins them
// to the model. Needs a QApplication, before and after it. Main thread.
#pragma once

#include "app/app_delegate.h"
#include "app/application.h"
#include "app/program_updates.h"
#include "platform/linux/bus_connection.h"
#include "platform/linux/desktop_session_events.h"
#include "platform/linux/instance_activation.h"
#include "platform/linux/panel_item.h"
#include "platform/linux/portal_appearance.h"
#include "platform/linux/portal_folder_picker.h"
#include "platform/linux/qt_clipboard.h"
#include "platform/linux/qt_folder_picker.h"
#include "platform/linux/session_file_manager.h"
#include "presentation/frame_timer.h"
#include "support/environment.h"

namespace brimwatch {

class Desktop {
  public:
    // Both must outlive it. Shows the item; buses may come later.
    Desktop(Application& application, const Environment& environment);
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop() = default;

    AppDelegate& delegate() { return delegate_; }
    // What to start in place of the program, once it has quit.
    const std::optional<std::string>& successor() const { return updates_.successor(); }

  private:
    BusConnection sessionBus_;
    BusConnection systemBus_;
    PortalAppearance appearance_;
    DesktopSessionEvents session_;
    PanelItem item_;
    QtClipboard clipboard_;
    SessionFileManager fileManager_;
    QtFolderPicker qtFolderPicker_;
    PortalFolderPicker folderPicker_;
    EventLoopFrameTimer frameTimer_;
    ProgramUpdates updates_;
    AppDelegate delegate_;
    InstanceActivation activation_;
};

}  // namespace brimwatch
