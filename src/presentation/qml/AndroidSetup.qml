// The section of what goes to an Android phone.
import QtQuick
import Brimwatch

SetupSection {
    id: root

    required property PhonesSectionModel model

    help: qsTr("'QR 보기'를 누르고 안드로이드 앱에서 그 QR을 찍으면 연결돼요. 받은 한도를 암호화해서 안드로이드 앱으로 보내요. QR이 있으면 누구나 한도를 볼 수 있지만 로그인 정보는 볼 수 없어요. iPhone으로 보내기는 그대로예요.")
    objectName: "android"
    title: qsTr("안드로이드 연결")

    SetupCell {
        SecondaryButton {
            objectName: "phoneLink.show"
            text: qsTr("안드로이드 연결 QR 보기")
            onClicked: root.model.showPhoneLink()
        }
        ChannelStatus {
            needsAttention: root.model.androidNeedsAttention
            objectName: "android.status"
            offersSignIn: root.model.androidOffersSignIn
            status: root.model.androidStatus
            onSignInAsked: root.model.signIn()
        }
    }
}
