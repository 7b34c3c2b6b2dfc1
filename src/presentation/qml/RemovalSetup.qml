// The section for who is about to delete the program.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupSection {
    id: root

    required property bool isRemoving
    required property bool removedEverything

    signal removalAsked

    objectName: "removal"
    title: qsTr("앱을 지우기 전에")

    SetupCell {
        SetupNote {
            objectName: "removal.text"
            text: qsTr("모두 해제하면 Claude Code 상태줄을 원래대로 돌리고, iPhone과 안드로이드로 보낸 값을 지우고, Codex 확인과 로그인할 때 열기를 꺼요. ~/.brimwatch 폴더는 앱을 지운 뒤 지워도 돼요.")
        }
        RowLayout {
            spacing: 10

            SecondaryButton {
                enabled: !root.isRemoving
                objectName: "settings.removeEverything"
                role: SecondaryButton.Destructive
                text: qsTr("모두 해제")
                onClicked: root.removalAsked()
            }
            SetupNote {
                objectName: "removal.progress"
                text: qsTr("해제하고 있어요…")
                visible: root.isRemoving
            }
        }
        RowLayout {
            spacing: 6
            visible: root.removedEverything

            Symbol {
                Layout.preferredHeight: Math.round(ViewPalette.controlSize * 1.15)
                Layout.preferredWidth: Layout.preferredHeight
                color: ViewPalette.levelComfortable
                name: "checkmark.circle.fill"
                objectName: "removal.doneSymbol"
            }
            SetupNote {
                objectName: "removal.done"
                text: qsTr("모두 해제했어요. 메뉴 막대에서 종료하고 앱을 지워도 돼요.")
            }
        }
    }
}
