// A bar at the edge that shows where a list stands, there only while the list is longer than its
// room.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

T.ScrollBar {
    id: root

    hoverEnabled: true
    implicitWidth: 6
    minimumSize: 0.1
    padding: 1
    visible: root.size < 1

    contentItem: Rectangle {
        color: root.pressed || root.hovered ? ViewPalette.secondaryLabel : ViewPalette.controlPressed
        radius: width / 2
    }
}
