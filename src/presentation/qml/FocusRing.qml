// Shows what the keyboard acts on: a ring just outside of its parent.
import QtQuick
import Brimwatch

Rectangle {
    property real cornerRadius: 0

    anchors.fill: parent
    anchors.margins: -2
    border.color: ViewPalette.focusRing
    border.width: 2
    color: "transparent"
    objectName: "focusRing"
    radius: cornerRadius + 2
}
