// Qt's folder chooser, for desktops that have none to ask. Needs a QApplication. Main thread.
#pragma once

#include <QFileDialog>
#include <memory>

#include "platform/folder_picker.h"

namespace brimwatch {

class QtFolderPicker final : public FolderPicker {
  public:
    QtFolderPicker();
    QtFolderPicker(const QtFolderPicker&) = delete;
    QtFolderPicker& operator=(const QtFolderPicker&) = delete;
    ~QtFolderPicker() override;

    // Shows hidden folders too, which is where accounts lie. Starts in the home folder.
    void pick(QWindow& parent, const QString& title, Picked picked) override;

    // That of the last question, or none.
    QFileDialog* dialog() const { return dialog_.get(); }

  private:
    std::unique_ptr<QFileDialog> dialog_;
};

}  // namespace brimwatch
