// The program's item in the panel of the desktop: a picture, a number beside it, and a menu.
//
// Panels come late, crash and come back; the item is there whenever one is. What is set while there
// is none shows in the next one. Setting what is set already costs nothing. Main thread.
#pragma once

#include <QColor>
#include <QImage>
#include <QObject>
#include <QPoint>
#include <QString>
#include <optional>
#include <vector>

namespace brimwatch {

class StatusItem : public QObject {
    Q_OBJECT

  public:
    // How things have to be drawn in the panel.
    struct Look {
        bool isDark = false;
        QColor ink = Qt::black;  // of text
        double scale = 2;        // pixels per point of the pictures that fit it best

        bool operator==(const Look&) const = default;
    };

    struct MenuRow {
        enum class Kind { command, text, separator };

        Kind kind = Kind::command;
        int id = 0;  // of a command, above 0 and its own for as long as the program runs
        QString label;

        bool operator==(const MenuRow&) const = default;
    };

    StatusItem() = default;

    // Puts the item into the panel, now or when there is one. Once.
    virtual void show() = 0;

    // False where it is known that nobody can see the item.
    virtual bool isVisible() const = 0;
    virtual Look look() const = 0;

    // The number, as in "42%", or nothing.
    virtual void setTitle(const QString& title) = 0;
    // A square picture; a null picture leaves the place empty. The pixels are copied if they are to
    // be kept. One that equals the last in every pixel is not sent.
    virtual void setPicture(const QImage& picture) = 0;
    // From top to bottom. The texts among the rows are its tooltip as well.
    virtual void setMenu(const std::vector<MenuRow>& rows) = 0;

  signals:
    // A click, with its place on the screen in pixels where the desktop tells it. `activationToken`
    // is what lets a window come to the front, or empty.
    void activated(std::optional<QPoint> position, const QString& activationToken);
    void menuOpened();
    void commandChosen(int id);
    void lookChanged();
    void visibilityChanged();
};

}  // namespace brimwatch
