#include "platform/linux/qt_folder_picker.h"

#include <QDir>
#include <QWindow>
#include <utility>

namespace brimwatch {

QtFolderPicker::QtFolderPicker() = default;

QtFolderPicker::~QtFolderPicker() = default;

void QtFolderPicker::pick(QWindow& parent, const QString& title, Picked picked) {
    dialog_ = std::make_unique<QFileDialog>(nullptr, title, QDir::homePath());
    dialog_->setFileMode(QFileDialog::Directory);
    dialog_->setOption(QFileDialog::ShowDirsOnly);
    dialog_->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Hidden);
    dialog_->winId();  // makes its window, which then gets a parent
    if (QWindow* const window = dialog_->windowHandle()) window->setTransientParent(&parent);
    QObject::connect(dialog_.get(), &QFileDialog::finished, dialog_.get(),
                     [dialog = dialog_.get(), picked = std::move(picked)](int result) {
                         const QStringList chosen = dialog->selectedFiles();
                         if (result == QFileDialog::Accepted && !chosen.isEmpty()) {
                             picked(chosen.first().toStdString());
                         } else {
                             picked(std::nullopt);
                         }
                     });
    dialog_->open();
}

}  // namespace brimwatch
