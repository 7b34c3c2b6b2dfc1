// Asks before something that can't be taken back, over all of its parent. Escape takes nothing;
// the focus goes back to where it was.
import QtQuick
import QtQuick.Layouts
import Brimwatch

FocusScope {
    id: root

    property string title
    property string message
    property string action
    property bool isOpen: false
    property Item formerFocus: null

    signal confirmed

    function open() {
        if (!root.isOpen)
            root.formerFocus = root.Window.activeFocusItem;
        root.isOpen = true;
        cancel.forceActiveFocus();
    }
    function close() {
        root.isOpen = false;
        root.focus = false;
        root.formerFocus?.forceActiveFocus();
        root.formerFocus = null;
    }
    function confirm() {
        if (!root.isOpen)
            return;
        root.close();
        root.confirmed();
    }

    Accessible.description: root.message
    Accessible.name: root.title
    Accessible.role: Accessible.AlertMessage
    Keys.onEscapePressed: root.close()
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
        width: Math.min(root.width - 32, 320)

        ColumnLayout {
            id: column

            anchors.left: parent.left
            anchors.margins: 20
            anchors.right: parent.right
            anchors.top: parent.top
            spacing: 10

            PlainText {
                Layout.fillWidth: true
                elide: Text.ElideNone
                font.bold: true
                font.pixelSize: Math.round(ViewPalette.subheadlineSize)
                horizontalAlignment: Text.AlignHCenter
                text: root.title
                wrapMode: Text.Wrap
            }
            PlainText {
                Layout.fillWidth: true
                elide: Text.ElideNone
                font.pixelSize: Math.round(ViewPalette.calloutSize)
                horizontalAlignment: Text.AlignHCenter
                text: root.message
                wrapMode: Text.Wrap
            }
            SecondaryButton {
                id: confirm

                KeyNavigation.tab: cancel
                Layout.fillWidth: true
                Layout.topMargin: 4
                objectName: "dialog.confirm"
                role: SecondaryButton.Destructive
                text: root.action
                onClicked: root.confirm()
            }
            SecondaryButton {
                id: cancel

                KeyNavigation.tab: confirm
                Layout.fillWidth: true
                focus: true
                objectName: "dialog.cancel"
                text: qsTr("취소")
                onClicked: root.close()
            }
        }
    }
}
