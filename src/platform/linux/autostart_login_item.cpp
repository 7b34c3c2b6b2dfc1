#include "platform/linux/autostart_login_item.h"

#include <algorithm>
#include <utility>

#include "support/atomic_file.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::size_t entrySizeLimit = 64U << 10U;
constexpr ReplacementOptions entryOptions = {
    .durability = Durability::synchronized, .permissions = 0644, .owner = std::nullopt};

auto failure(std::errc error) {
    return tl::unexpected(std::make_error_code(error));
}

bool isMissing(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

std::string entryPath(std::string_view configFolder) {
    return joinPath(configFolder, "autostart/net.quillmoor.brimwatch.desktop");
}

// Without empty elements.
std::vector<std::string> elements(std::string_view list) {
    std::vector<std::string> found;
    while (!list.empty()) {
        const std::string_view element = list.substr(0, list.find(':'));
        if (!element.empty()) found.emplace_back(element);
        list.remove_prefix(std::min(element.size() + 1, list.size()));
    }
    return found;
}

std::vector<std::string> absoluteFolders(std::string_view list) {
    std::vector<std::string> folders = elements(list);
    std::erase_if(folders, [](const std::string& folder) { return !folder.starts_with('/'); });
    return folders;
}

}  // namespace

AutostartSession autostartSession(const Environment& environment, FileSystem& files,
                                  std::uint32_t userId) {
    AutostartSession session;
    session.userConfigFolder = configFolder(environment, files, userId);
    session.systemConfigFolders =
        absoluteFolders(environment.value("XDG_CONFIG_DIRS").value_or(""));
    if (session.systemConfigFolders.empty()) session.systemConfigFolders = {"/etc/xdg"};
    session.desktops = elements(environment.value("XDG_CURRENT_DESKTOP").value_or(""));
    session.executableFolders = absoluteFolders(environment.value("PATH").value_or(""));
    return session;
}

AutostartLoginItem::AutostartLoginItem(FileSystem& files, AutostartSession session,
                                       std::string executable, IsExecutable isExecutable)
    : files_(files),
      session_(std::move(session)),
      executable_(std::move(executable)),
      isExecutable_(std::move(isExecutable)) {}

bool AutostartLoginItem::isEnabled() {
    std::vector<std::string> folders = session_.systemConfigFolders;
    if (session_.userConfigFolder) folders.insert(folders.begin(), *session_.userConfigFolder);
    for (const std::string& folder : folders) {
        const FileResult<std::string> text = files_.read(entryPath(folder), entrySizeLimit);
        if (text) return isSwitchedOn(*text);
        if (!isMissing(text.error())) return false;
    }
    return false;
}

FileResult<void> AutostartLoginItem::setEnabled(bool enabled) {
    if (!session_.userConfigFolder) return failure(std::errc::no_such_file_or_directory);
    return enabled ? switchOn() : switchOff();
}

bool AutostartLoginItem::isSwitchedOn(std::string_view text) const {
    const std::optional<std::vector<DesktopEntryLine>> lines = parseDesktopEntry(text);
    if (!lines) return false;
    const auto has = [&](std::string_view key) {
        return std::any_of(lines->begin(), lines->end(),
                           [&](const DesktopEntryLine& line) { return line.key == key; });
    };
    return has("Type") && has("Exec") &&
           std::none_of(lines->begin(), lines->end(),
                        [this](const DesktopEntryLine& line) { return switchesOff(line); });
}

bool AutostartLoginItem::switchesOff(const DesktopEntryLine& line) const {
    const auto is = [&](std::initializer_list<std::string_view> keys) {
        return std::find(keys.begin(), keys.end(), line.key) != keys.end();
    };
    if (is({"Type"})) return desktopString(line.value) != "Application";
    if (is({"Exec"})) return line.value.empty();
    if (is({"Hidden", "X-systemd-skip"})) return desktopBoolean(line.value) != false;
    if (is({"X-GNOME-Autostart-enabled", "X-MATE-Autostart-enabled"})) {
        return desktopBoolean(line.value) != true;
    }
    if (is({"OnlyShowIn"})) return !namesThisDesktop(line.value);
    if (is({"NotShowIn"})) return namesThisDesktop(line.value);
    if (is({"TryExec"})) return !isFound(desktopString(line.value));
    return is({"AutostartCondition", "X-KDE-autostart-condition", "X-GNOME-Autostart-Phase"}) &&
           !line.value.empty();
}

bool AutostartLoginItem::namesThisDesktop(std::string_view list) const {
    const std::vector<std::string> named = desktopList(list);
    return std::find_first_of(named.begin(), named.end(), session_.desktops.begin(),
                              session_.desktops.end()) != named.end();
}

bool AutostartLoginItem::isFound(const std::string& program) const {
    // As if the key were not there.
    if (program.empty()) return true;
    if (program.starts_with('/')) return isExecutable_(program);
    const std::vector<std::string>& folders = session_.executableFolders;
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
        return isExecutable_(joinPath(folder, program));
    });
}

bool AutostartLoginItem::hasSystemEntry() {
    const std::vector<std::string>& folders = session_.systemConfigFolders;
    return std::any_of(folders.begin(), folders.end(), [this](const std::string& folder) {
        const FileResult<FileStatus> status = files_.status(entryPath(folder));
        return status || !isMissing(status.error());
    });
}

FileResult<void> AutostartLoginItem::switchOn() {
    const std::optional<std::string> command = execValue(executable_);
    if (!command) return failure(std::errc::invalid_argument);
    return write(
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Brimwatch\n"
        "Exec=" +
        *command +
        "\n"
        "Icon=net.quillmoor.brimwatch\n"
        "X-GNOME-Autostart-enabled=true\n");
}

FileResult<void> AutostartLoginItem::switchOff() {
    if (hasSystemEntry()) {
        return write(
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Brimwatch\n"
            "Hidden=true\n");
    }
    const FileResult<void> removed = files_.remove(entryPath(*session_.userConfigFolder));
    if (!removed && isMissing(removed.error())) return {};
    return removed;
}

FileResult<void> AutostartLoginItem::write(std::string_view text) {
    const std::string path = entryPath(*session_.userConfigFolder);
    const std::string folder = parentPath(path);
    if (const FileResult<void> made = files_.makeFolders(folder); !made) return made;
    files_.removeAbandonedTemporaries(folder);
    return replaceFile(files_, path, text, entryOptions);
}

}  // namespace brimwatch
