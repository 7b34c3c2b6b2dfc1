// The sheet in which the user names a folder with an account.
import QtQuick
import QtQuick.Layouts
import Brimwatch

DialogFrame {
    id: root

    required property AddAccountFolderModel model

    firstFocus: field
    objectName: "addFolder"
    title: root.model.title
    onAccepted: root.model.save()
    onDismissed: root.isOpen = false

    PlainText {
        Accessible.ignored: true
        Layout.fillWidth: true
        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.calloutSize)
        text: root.model.pathLabel
        wrapMode: Text.Wrap
    }
    GridLayout {
        Layout.fillWidth: true
        columnSpacing: 8
        columns: ViewPalette.accessibilitySize ? 1 : 2
        rowSpacing: 8

        SetupField {
            id: field

            KeyNavigation.backtab: save
            KeyNavigation.tab: pick
            label: root.model.pathLabel
            objectName: root.model.pathIdentifier
            placeholderText: root.model.placeholder
            text: root.model.path
            onTextEdited: root.model.path = text
        }
        SecondaryButton {
            id: pick

            KeyNavigation.tab: cancel
            objectName: "addFolder.pick"
            text: qsTr("폴더 고르기…")
            onClicked: root.model.pick()
        }
    }
    SetupNote {
        objectName: "addFolder.note"
        text: root.model.note
    }
    PlainText {
        Accessible.role: Accessible.AlertMessage
        Layout.fillWidth: true
        color: ViewPalette.red
        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.calloutSize)
        objectName: "addFolder.invalid"
        text: root.model.invalidText
        visible: root.model.invalid
        wrapMode: Text.Wrap
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: 4
        spacing: 8

        SecondaryButton {
            id: cancel

            KeyNavigation.tab: save
            objectName: "addFolder.cancel"
            text: qsTr("취소")
            onClicked: root.dismissed()
        }
        ProminentButton {
            id: save

            KeyNavigation.tab: field
            objectName: "addFolder.save"
            text: qsTr("추가")
            onClicked: root.accepted()
        }
    }
    Connections {
        target: root.model

        function onDismissed() {
            root.isOpen = false;
        }
        function onOpened() {
            root.isOpen = true;
        }
    }
}
