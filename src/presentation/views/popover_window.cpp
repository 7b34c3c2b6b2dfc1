#include "presentation/views/popover_window.h"

#include <QKeyEvent>
#include <QQuickItem>

#include "presentation/views/view_module.h"

namespace brimwatch {

PopoverWindow::PopoverWindow(QQmlEngine* engine) : QQuickView(engine, nullptr) {
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setColor(Qt::transparent);
    setResizeMode(QQuickView::SizeViewToRootObject);
    setTitle(QStringLiteral("Brimwatch?"));
    // Behind what the window system has still to say: the focus may only pass through another one.
    leave_.setSingleShot(true);
    leave_.setInterval(0);
    connect(&leave_, &QTimer::timeout, this, &PopoverWindow::dismissIfInactive);
    connect(this, &QWindow::activeChanged, this, &PopoverWindow::followActivity);
    connect(this, &QWindow::visibleChanged, this, [this] { wasActive_ = false; });
}

void PopoverWindow::settle() {
    layOut(*rootObject());
    resize(rootObject()->size().toSize());
}

void PopoverWindow::forbidOtherSizes() {
    const auto forbid = [this] {
        const QSize size = rootObject()->size().toSize();
        setMinimumSize(size);
        setMaximumSize(size);
    };
    // The window takes these sizes a turn after its content has.
    connect(rootObject(), &QQuickItem::widthChanged, this, forbid);
    connect(rootObject(), &QQuickItem::heightChanged, this, forbid);
    forbid();
}

void PopoverWindow::followActivity() {
    if (isActive()) {
        wasActive_ = true;
    } else {
        leave_.start();
    }
}

void PopoverWindow::dismissIfInactive() {
    if (wasActive_ && !isActive()) emit dismissed();
}

void PopoverWindow::keyPressEvent(QKeyEvent* event) {
    QQuickView::keyPressEvent(event);
    if (event->isAccepted() || event->key() != Qt::Key_Escape) return;
    event->accept();
    emit dismissed();
}

void PopoverWindow::closeEvent(QCloseEvent* event) {
    emit dismissed();
    QQuickView::closeEvent(event);
}

}  // namespace brimwatch
