// What needs an answer first, over all of its parent. Escape dismisses it, and Enter presses its
// default button; the focus goes back to where it was.
import QtQuick
import QtQuick.Layouts
import Brimwatch

FocusScope {
    id: root

    required property string title
    property string message: ""
    property int role: Accessible.Dialog
    property bool isOpen: false
    property Item firstFocus: null
    property Item formerFocus: null
    default property alias parts: column.data

    signal dismissed
    signal accepted

    onIsOpenChanged: {
        if (root.isOpen) {
            root.formerFocus = root.Window.activeFocusItem;
            root.firstFocus?.forceActiveFocus();
        } else {
            root.focus = false;
            root.formerFocus?.forceActiveFocus();
            root.formerFocus = null;
        }
    }
    // One that is open from the start.
    Component.onCompleted: {
        if (root.isOpen)
            root.firstFocus?.forceActiveFocus();
    }

    Accessible.description: root.message
    Accessible.name: root.title
    Accessible.role: root.role
    Keys.onEnterPressed: root.accepted()
    Keys.onEscapePressed: root.dismissed()
    Keys.onReturnPressed: root.accepted()
    anchors.fill: parent
    visible: root.isOpen
    z: 1

    Rectangle {
        anchors.fill: parent
        color: "#66000000"

        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
            onWheel: {}
        }
    }
    Rectangle {
        anchors.centerIn: parent
        border.color: ViewPalette.popoverEdge
        color: ViewPalette.popoverFill
        height: column.implicitHeight + 40
        objectName: "dialog"
        radius: 12
        width: Math.min(root.width - 32, 380)

        ColumnLayout {
            id: column

            anchors.left: parent.left
            anchors.margins: 20
            anchors.right: parent.right
            anchors.top: parent.top
            spacing: 10

            PlainText {
                Accessible.role: Accessible.Heading
                Layout.fillWidth: true
                elide: Text.ElideNone
                font.bold: true
                font.pixelSize: Math.round(ViewPalette.subheadlineSize)
                objectName: "dialog.title"
                text: root.title
                wrapMode: Text.Wrap
            }
            PlainText {
                Layout.fillWidth: true
                elide: Text.ElideNone
                font.pixelSize: Math.round(ViewPalette.calloutSize)
                objectName: "dialog.message"
                text: root.message
                visible: text !== ""
                wrapMode: Text.Wrap
            }
        }
    }
}
