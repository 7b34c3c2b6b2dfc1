// What stands in the place of the cards as long as there are none.
import QtQuick
import Brimwatch

Item {
    id: root

    property alias text: label.text

    implicitHeight: label.implicitHeight + 24

    CardBackground {
        anchors.fill: parent
        objectName: "cardBackground"
    }
    PlainText {
        id: label

        anchors.left: parent.left
        anchors.margins: 12
        anchors.right: parent.right
        anchors.top: parent.top
        color: ViewPalette.secondaryLabel
        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.calloutSize)
        objectName: "emptyText"
        wrapMode: Text.Wrap
    }
}
