// The settings window. It is made when it is first shown, and kept. Main thread.
#pragma once

#include <QAction>
#include <QWindow>
#include <functional>
#include <memory>
#include <vector>

#include "presentation/appearance.h"

namespace brimwatch {

class SetupWindow {
  public:
    explicit SetupWindow(std::function<void()> quit);
    ~SetupWindow();
    SetupWindow(const SetupWindow&) = delete;
    SetupWindow& operator=(const SetupWindow&) = delete;

    bool isVisible() const;
    // Brings it forward if it is shown already.
    void show();
    void setAppearance(Appearance appearance);

    // None before it was first shown.
    QWindow* window() const;
    // What its keys do, with their texts.
    std::vector<QAction*> actions() const;

  private:
    class Surface;

    void addAction(const QString& text, const QString& keys, std::function<void()> run);

    std::vector<std::unique_ptr<QAction>> actions_;
    Appearance appearance_ = Appearance::light;
    std::unique_ptr<Surface> surface_;
};

}  // namespace brimwatch
