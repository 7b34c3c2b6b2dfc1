// The settings window. It is made when it is first shown, and kept. Main thread.
#pragma once

#include <QAction>
#include <QObject>
#include <QPointer>
#include <QWindow>
#include <functional>
#include <memory>
#include <vector>

#include "presentation/appearance.h"
#include "presentation/sheet_window.h"

namespace brimwatch {

class SetupWindow final : public QObject {
  public:
    // Gives nothing where it can't be made, which `make` has told the log; the next showing tries
    // again.
    using Make = std::function<std::unique_ptr<SheetWindow>()>;

    SetupWindow(Make make, std::function<void()> quit);

    bool isVisible() const;
    // Brings it forward if it is shown already.
    void show();
    void setAppearance(Appearance appearance);
    void setTextScale(double scale);

    // None before it was first shown.
    QWindow* window() const;
    // What its keys do, with their texts.
    std::vector<QAction*> actions() const;
    // Puts their texts into the language that is now the user's.
    void translate();
    // Has its keys act in another window of the program, too, and upon that.
    void lendKeys(QWindow& window);

    // By itself: shortcuts of Qt know windows only where there are no widgets in the program.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Action {
        const char* text;  // in Korean
        std::unique_ptr<QAction> action;
    };

    void addAction(const char* text, const QString& keys, std::function<void()> run);
    // The window with the key that is being pressed, else that of the settings.
    QWindow* target() const;

    Make make_;
    std::vector<Action> actions_;
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    std::unique_ptr<SheetWindow> sheet_;
    QPointer<QWindow> watched_;
    QPointer<QWindow> pressed_;
};

}  // namespace brimwatch
