// The window of the popover: without a frame, above all others, and of the size of its content.
// Main thread.
#pragma once

#include <QQuickView>
#include <QTimer>

namespace brimwatch {

class PopoverWindow final : public QQuickView {
    Q_OBJECT

  public:
    explicit PopoverWindow(QQmlEngine* engine);

    // Lays the content out and takes its size. By itself that would happen only with the first
    // picture, and the window would jump.
    void settle();
    // Tells the window system that the size of the content is the only one, for as long as it has
    // that content. Compositors that tile windows let such a window float.
    void forbidOtherSizes();

  signals:
    // The user has turned to something else, pressed Escape, or closed it as a window.
    void dismissed();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void followActivity();
    void dismissIfInactive();

    bool wasActive_ = false;  // since it was last shown
    QTimer leave_;
};

}  // namespace brimwatch
