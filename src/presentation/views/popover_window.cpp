#include "presentation/views/popover_window.h"

#include <QKeyEvent>
#include <QQuickItem>

namespace brimwatch {

namespace {

void polish(QQuickItem& item) {
    for (QQuickItem* child : item.childItems())
        polish(*child);
    item.ensurePolished();
}

}  // namespace

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
    constexpr int passes = 4;  // a text that wraps makes its column higher, and that the next one
    QQuickItem& root = *rootObject();
    for (int pass = 0; pass < passes; ++pass)
        polish(root);
    resize(root.size().toSize());
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
