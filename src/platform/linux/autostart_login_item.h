// The login item of a Linux desktop: the autostart entry `net.quillmoor.brimwatch.desktop` (Desktop
// Application Autostart Specification).
//
// The entry that counts is the user's, else that of the first system folder that has one. It is
// switched off if any session would take it so: the tools of the desktops switch entries off by
// editing them, each in a way of its own. So is one that can't be read, is larger than 64 KiB, is
// no desktop entry, or depends on a condition that only some sessions know. Where a key stands
// twice, both count.
//
// Main thread; waits for the disk when it writes.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/desktop_entry.h"
#include "platform/login_item.h"
#include "support/environment.h"
#include "support/file_system.h"

namespace brimwatch {

// What a session starts its programs by.
struct AutostartSession {
    std::optional<std::string> userConfigFolder;
    std::vector<std::string> systemConfigFolders;  // the most important first
    std::vector<std::string> desktops;             // elements of XDG_CURRENT_DESKTOP
    std::vector<std::string> executableFolders;    // elements of PATH

    bool operator==(const AutostartSession&) const = default;
};

// Folders that are not absolute are left out.
AutostartSession autostartSession(const Environment& environment, FileSystem& files,
                                  std::uint32_t userId);

class AutostartLoginItem final : public LoginItem {
  public:
    using IsExecutable = std::function<bool(const std::string& path)>;

    // `executable` is what the entry shall start, an absolute path. The file system must outlive
    // this.
    AutostartLoginItem(FileSystem& files, AutostartSession session, std::string executable,
                       IsExecutable isExecutable);

    bool isEnabled() override;
    // On: the user's entry is written afresh. Off: it is removed, or says that the program is not
    // to be started where a system folder has an entry that would count then. A symbolic link in
    // its place is replaced or removed itself. Fails with `std::errc::invalid_argument` for an
    // executable that no entry can start (`execValue`).
    FileResult<void> setEnabled(bool enabled) override;

  private:
    bool isSwitchedOn(std::string_view text) const;
    bool switchesOff(const DesktopEntryLine& line) const;
    bool namesThisDesktop(std::string_view list) const;
    bool isFound(const std::string& program) const;

    bool hasSystemEntry();
    FileResult<void> switchOn();
    FileResult<void> switchOff();
    FileResult<void> write(std::string_view text);

    FileSystem& files_;
    AutostartSession session_;
    std::string executable_;
    IsExecutable isExecutable_;
};

}  // namespace brimwatch
