// What lies between two lines of a section, its parts below each other.
import QtQuick
import QtQuick.Layouts
import Brimwatch

Item {
    id: root

    default property alias parts: column.data

    Layout.fillWidth: true
    implicitHeight: column.implicitHeight + 18

    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 1
        color: ViewPalette.separator
        height: 1
        objectName: "line"
        visible: root.y > 0
    }
    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8
    }
}
