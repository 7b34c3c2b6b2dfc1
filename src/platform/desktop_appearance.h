// What the user has told the desktop about how programs should look.
//
// What can't be told keeps its starting value: light, of usual contrast, with motion, texts of
// their usual size. Main thread.
#pragma once

#include <QObject>

namespace brimwatch {

class DesktopAppearance : public QObject {
    Q_OBJECT

  public:
    DesktopAppearance() = default;

    virtual bool isDark() const = 0;
    virtual bool reducesMotion() const = 0;
    virtual bool increasesContrast() const = 0;
    // A factor for the size of all texts, above 0.
    virtual double textScale() const = 0;

  signals:
    void darkChanged();
    void motionChanged();
    void contrastChanged();
    void textScaleChanged();
};

}  // namespace brimwatch
