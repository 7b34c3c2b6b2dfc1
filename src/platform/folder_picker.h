// The desktop's own way to choose a folder. Main thread.
#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <string>

class QWindow;

namespace brimwatch {

class FolderPicker {
  public:
    // Absent if the user chose none.
    using Picked = std::function<void(std::optional<std::string> folder)>;

    FolderPicker() = default;
    FolderPicker(const FolderPicker&) = delete;
    FolderPicker& operator=(const FolderPicker&) = delete;
    virtual ~FolderPicker() = default;

    // Asks in front of the window and returns at once. `picked` is called once, later, unless the
    // picker goes first; a question that is still open is dropped.
    virtual void pick(QWindow& parent, const QString& title, Picked picked) = 0;
};

}  // namespace brimwatch
