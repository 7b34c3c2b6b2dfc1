// A text that scrolls where it is higher than its room.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

Flickable {
    id: root

    required property string text

    Keys.onDownPressed: scrollBar.increase()
    Keys.onUpPressed: scrollBar.decrease()
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    contentHeight: shown.implicitHeight
    implicitHeight: contentHeight

    T.ScrollBar.vertical: SlimScrollBar {
        id: scrollBar

        stepSize: 0.1
    }

    PlainText {
        id: shown

        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.calloutSize)
        lineHeight: 1.15
        objectName: "helpText"
        text: root.text
        width: root.width
        wrapMode: Text.Wrap
    }
}
