// The sheet in which an account gets its name.
import QtQuick
import QtQuick.Layouts
import Brimwatch

DialogFrame {
    id: root

    property string recordId: ""
    property string originalName: ""

    // `name` is empty for the original one.
    signal saved(string recordId, string name)

    function open(recordId: string, givenName: string, originalName: string): void {
        root.recordId = recordId;
        root.originalName = originalName;
        field.text = givenName;
        root.isOpen = true;
        field.selectAll();
    }
    function save(name: string): void {
        root.isOpen = false;
        root.saved(root.recordId, name);
    }

    firstFocus: field
    message: root.originalName
    objectName: "usageName"
    title: qsTr("이름 바꾸기")
    onAccepted: root.save(field.text)
    onDismissed: root.isOpen = false

    SetupField {
        id: field

        KeyNavigation.backtab: save
        KeyNavigation.tab: reset
        label: qsTr("표시할 이름")
        objectName: "usageName.text"
        placeholderText: qsTr("개인용, 업무용, 리뷰용")
    }
    GridLayout {
        Layout.fillWidth: true
        Layout.topMargin: 4
        columnSpacing: 8
        columns: ViewPalette.accessibilitySize ? 1 : 4
        rowSpacing: 8

        SecondaryButton {
            id: reset

            KeyNavigation.tab: cancel
            Layout.fillWidth: ViewPalette.accessibilitySize
            objectName: "usageName.reset"
            text: qsTr("원래 이름 사용")
            onClicked: root.save("")
        }
        Item {
            Layout.fillWidth: true
            visible: !ViewPalette.accessibilitySize
        }
        SecondaryButton {
            id: cancel

            KeyNavigation.tab: save
            Layout.fillWidth: ViewPalette.accessibilitySize
            objectName: "usageName.cancel"
            text: qsTr("취소")
            onClicked: root.dismissed()
        }
        ProminentButton {
            id: save

            KeyNavigation.tab: field
            Layout.fillWidth: ViewPalette.accessibilitySize
            objectName: "usageName.save"
            text: qsTr("저장")
            onClicked: root.accepted()
        }
    }
}
