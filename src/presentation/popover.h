// The panel that opens at a click on the status item. Main thread.
#pragma once

#include <QObject>
#include <QPoint>
#include <QString>
#include <optional>

#include "presentation/appearance.h"

namespace brimwatch {

class Popover : public QObject {
    Q_OBJECT

  public:
    using Appearance = brimwatch::Appearance;

    Popover() = default;

    virtual bool isShown() const = 0;
    // Near the place of the click, in pixels of the screen, where that is known. It closes by
    // itself when it loses the focus.
    virtual void show(std::optional<QPoint> click, const QString& activationToken) = 0;
    // Nothing if it is not shown.
    virtual void performClose() = 0;
    virtual void setAppearance(Appearance appearance) = 0;
    // A factor for the size of all texts, above 0.
    virtual void setTextScale(double scale) = 0;

  signals:
    void willShow();
    void didShow();
    void willClose();
    void didClose();
};

}  // namespace brimwatch
