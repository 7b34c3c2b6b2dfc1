// The section of what goes to iPhones.
import QtQuick
import Brimwatch

SetupSection {
    id: root

    required property PhonesSectionModel model

    help: qsTr("받은 한도를 암호화해서 iPhone 앱으로 보내요. 맥과 iPhone이 같은 Apple 계정이고, 둘 다 암호 동기화가 켜져 있어야 해요. 끄면 보낸 값을 지워요.")
    objectName: "iPhone"
    title: qsTr("iPhone으로 보내기")

    SetupCell {
        SetupSwitch {
            isOn: root.model.sendsToIPhone
            objectName: "iPhone.sends"
            text: qsTr("iPhone으로 보내기")
            onAsked: on => root.model.setSendsToIPhone(on)
        }
        ChannelStatus {
            needsAttention: root.model.iPhoneNeedsAttention
            objectName: "iPhone.status"
            offersSignIn: root.model.iPhoneOffersSignIn
            status: root.model.iPhoneStatus
            onSignInAsked: root.model.signIn()
        }
    }
}
