// Tells what went wrong.
import QtQuick
import QtQuick.Layouts
import Brimwatch

DialogFrame {
    id: root

    firstFocus: seen
    role: Accessible.AlertMessage
    title: "Brimwatch?"
    onAccepted: root.dismissed()

    ProminentButton {
        id: seen

        KeyNavigation.backtab: seen
        KeyNavigation.tab: seen
        Layout.alignment: Qt.AlignRight
        focus: true
        objectName: "alert.seen"
        text: qsTr("확인")
        onClicked: root.dismissed()
    }
}
