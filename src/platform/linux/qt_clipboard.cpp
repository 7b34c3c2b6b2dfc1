#include "platform/linux/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <memory>

namespace brimwatch {

void QtClipboard::setSecretText(const QString& text) {
    auto data = std::make_unique<QMimeData>();
    data->setText(text);
    // What keepers of histories look for, first of all Klipper, and after it most others.
    data->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
    QGuiApplication::clipboard()->setMimeData(data.release());
}

}  // namespace brimwatch
