// The section of Codex.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupSection {
    id: root

    required property CodexSectionModel model

    signal addAsked
    signal renameAsked(string recordId, string givenName, string originalName)

    help: qsTr("이 맥의 기본 계정과 ~/.codex-* 계정을 찾아 각각 5분마다 한도를 물어요. 다른 곳에 둔 계정은 '계정 추가'에서 Codex 설정 폴더를 고르면 돼요. 로그인은 Codex에서 하고, 이 앱은 로그인 정보를 읽지 않아요. 해제해도 Codex 로그인은 유지돼요.")
    title: qsTr("Codex")

    SetupCell {
        SetupSwitch {
            isOn: root.model.isEnabled
            objectName: "codex.enabled"
            text: qsTr("5분마다 Codex 한도 받기")
            onAsked: on => root.model.setEnabled(on)
        }
    }
    SetupCell {
        Flow {
            Layout.fillWidth: true
            spacing: 8

            SecondaryButton {
                objectName: "codex.connectAll"
                text: qsTr("Codex 연결")
                onClicked: root.model.connectAll()
            }
            SecondaryButton {
                Accessible.name: qsTr("Codex 계정 추가")
                objectName: "codex.addAccount"
                text: qsTr("계정 추가")
                onClicked: root.addAsked()
            }
            SecondaryButton {
                objectName: "codex.receiveNow"
                text: qsTr("지금 새로 받기")
                onClicked: root.model.receiveNow()
            }
        }
        SetupNote {
            objectName: "codex.status"
            text: root.model.status
            visible: text !== ""
        }
    }
    Repeater {
        model: root.model.accounts

        AccountRow {
            id: account

            required property int index
            required property string account
            required property string givenName
            required property string originalName
            required property bool isOn

            onRenameAsked: () => root.renameAsked(account.recordId, account.givenName, account.originalName)
            onRevealAsked: () => root.model.reveal(account.index)

            SetupSwitch {
                isOn: account.isOn
                objectName: "codex.connection." + account.account
                showsLabel: false
                text: account.spokenName
                onAsked: on => root.model.setAccount(account.index, on)
            }
        }
    }
}
