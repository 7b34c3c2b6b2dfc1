// How it stands with what is sent to a phone, and the way to the account where that is missing.
import QtQuick
import QtQuick.Layouts
import Brimwatch

ColumnLayout {
    id: root

    required property string status
    required property bool needsAttention
    required property bool offersSignIn

    signal signInAsked

    Layout.fillWidth: true
    spacing: 8

    SetupNote {
        color: root.needsAttention ? ViewPalette.levelWarning : ViewPalette.secondaryLabel
        objectName: "channelStatus"
        text: root.status
    }
    SecondaryButton {
        objectName: "signIn"
        text: qsTr("Apple 계정으로 로그인")
        visible: root.offersSignIn
        onClicked: root.signInAsked()
    }
}
