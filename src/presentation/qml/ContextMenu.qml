// A menu at the pointer.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

T.Menu {
    id: root

    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: 160
    margins: 6
    padding: 4

    background: Rectangle {
        border.color: ViewPalette.popoverEdge
        color: ViewPalette.popoverFill
        radius: 8
    }
    contentItem: ListView {
        currentIndex: root.currentIndex
        implicitHeight: contentHeight
        interactive: false
        model: root.contentModel
    }
}
