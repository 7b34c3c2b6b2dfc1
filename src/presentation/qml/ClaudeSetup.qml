// The section of Claude Code.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupSection {
    id: root

    required property ClaudeSectionModel model

    signal addAsked
    signal renameAsked(string recordId, string givenName, string originalName)

    help: qsTr("이 맥의 Claude Code 계정을 찾아 연결해요. 한 번 연결하면 나중에 생긴 계정도 알아서 연결해요. 다른 곳에 둔 계정은 '계정 추가'에서 Claude Code 설정 폴더를 고르면 돼요. 연결한 계정의 Claude Code가 한도를 전달하면 새 사용량이 와요. Claude 데스크톱 앱이나 Claude Code를 켜 두기만 하면 갱신되지 않을 수 있어요. 응답 후에도 그대로면 해당 Claude Code 세션을 다시 열어 주세요. 새 값을 받기 전에는 마지막 기록을 표시해요. 5시간·주간 한도는 Claude Code 상태줄에서 받고, 로그인 정보는 읽지 않아요. 쓰던 상태줄은 그대로예요.")
    title: qsTr("Claude Code")

    SetupCell {
        Flow {
            Layout.fillWidth: true
            spacing: 8

            SecondaryButton {
                objectName: "claude.connectAll"
                text: qsTr("Claude Code 연결")
                onClicked: root.model.connectAll()
            }
            SecondaryButton {
                Accessible.name: qsTr("Claude Code 계정 추가")
                objectName: "claude.addAccount"
                text: qsTr("계정 추가")
                onClicked: root.addAsked()
            }
        }
        SetupNote {
            objectName: "claude.footer"
            text: root.model.footer
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

            SecondaryButton {
                Accessible.name: account.isOn ? qsTr("%1 연결 해제").arg(account.spokenName) : qsTr("%1 연결").arg(account.spokenName)
                objectName: "claude.connection." + account.account
                text: account.isOn ? qsTr("해제") : qsTr("연결")
                onClicked: () => root.model.setAccount(account.index, !account.isOn)
            }
        }
    }
}
