// A part of the settings: a title, and rows on a ground of their own.
import QtQuick
import QtQuick.Layouts
import Brimwatch

ColumnLayout {
    id: root

    required property string title
    property string help: ""
    default property alias rows: rows.data

    Layout.fillWidth: true
    spacing: 6

    RowLayout {
        Layout.leftMargin: 2
        spacing: 2

        PlainText {
            Accessible.role: Accessible.Heading
            Layout.fillWidth: true
            Layout.maximumWidth: Math.ceil(implicitWidth)
            font.pixelSize: Math.round(ViewPalette.controlSize)
            font.weight: Font.DemiBold
            objectName: "sectionTitle"
            text: root.title
        }
        SetupHelpButton {
            help: root.help
            name: qsTr("%1 도움말").arg(root.title)
            objectName: "help"
            visible: root.help !== ""
        }
    }
    Rectangle {
        Layout.fillWidth: true
        border.color: ViewPalette.separator
        color: ViewPalette.rowFill
        implicitHeight: rows.implicitHeight
        objectName: "rowBackground"
        radius: 10

        ColumnLayout {
            id: rows

            anchors.left: parent.left
            anchors.right: parent.right
            spacing: 0
        }
    }
}
