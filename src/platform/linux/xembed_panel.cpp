#include "platform/linux/xembed_panel.h"

#include <QCursor>
#include <QIcon>
#include <QPixmap>

#include "platform/linux/number_picture.h"
#include "platform/linux/screen_pixels.h"

namespace brimwatch {

namespace {

using Row = StatusItem::MenuRow;

QIcon iconOf(const QImage& picture) {
    return {QPixmap::fromImage(picture)};
}

// An ampersand alone would underline what follows it.
QString actionText(QString label) {
    return label.replace('&', QLatin1String("&&"));
}

}  // namespace

XembedPanel::XembedPanel(const PanelContent& content) : content_(content) {
    connect(&menu_, &QMenu::aboutToShow, this, &XembedPanel::menuOpened);
    connect(&menu_, &QMenu::triggered, this,
            [this](const QAction* action) { emit commandChosen(action->data().toInt()); });
    setUp(ring_);
    updatePicture();
    updateRows();
    updateNumber();
    ring_.show();
}

void XembedPanel::setUp(QSystemTrayIcon& icon) {
    icon.setContextMenu(&menu_);
    connect(&icon, &QSystemTrayIcon::activated, this,
            [this, &icon](QSystemTrayIcon::ActivationReason reason) {
                // A click soon after another one is told as a double one, in its place.
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    emit activated(edgeInPixels(icon.geometry(), QCursor::pos()));
            });
}

void XembedPanel::updateNumber() {
    if (content_.number.isEmpty()) {
        number_.reset();
    } else if (!number_ || drawnNumber_ != content_.number || drawnLook_ != content_.look) {
        drawnNumber_ = content_.number;
        drawnLook_ = content_.look;
        const bool isNew = !number_;
        if (isNew) number_ = std::make_unique<QSystemTrayIcon>();
        number_->setIcon(iconOf(numberSquare(drawnNumber_, drawnLook_)));
        if (isNew) showNumber();
    }
    updateToolTip();
}

// Such trays put a new window on the left of those that they have.
void XembedPanel::showNumber() {
    setUp(*number_);
    const bool isRingShown = ring_.isVisible();
    ring_.hide();
    number_->show();
    ring_.setVisible(isRingShown);
}

void XembedPanel::updatePicture() {
    ring_.setIcon(
        iconOf(content_.picture.isNull() ? emptySquare(content_.look) : content_.picture));
}

void XembedPanel::updateRows() {
    menu_.clear();
    for (const Row& row : content_.rows) {
        if (row.kind == Row::Kind::separator) {
            menu_.addSeparator();
            continue;
        }
        QAction* action = menu_.addAction(actionText(row.label));
        action->setEnabled(row.kind == Row::Kind::command);
        action->setData(row.id);
    }
    updateToolTip();
}

void XembedPanel::updateToolTip() {
    const QString description = content_.description();
    const QString text =
        description.isEmpty() ? content_.title() : content_.title() + u'\n' + description;
    ring_.setToolTip(text);
    if (number_) number_->setToolTip(text);
}

}  // namespace brimwatch
