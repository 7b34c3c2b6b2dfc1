// The section with the order of the cards, whose rows are dragged to their places.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupSection {
    id: root

    required property CardOrderSectionModel model

    help: qsTr("줄을 끌어서 메뉴 창 카드의 순서를 바꿔요. 메뉴 창에서 카드를 오른쪽 클릭해 '순서 바꾸기'를 눌러도 여기로 와요. 새로 연결한 계정은 맨 아래에 붙어요. iPhone 홈 카드 순서와는 따로 정해요.")
    objectName: "menuCardOrder"
    title: qsTr("메뉴 카드 순서")
    visible: root.model.isShown

    Item {
        Accessible.name: root.title
        Accessible.role: Accessible.List
        Layout.fillWidth: true
        implicitHeight: rows.count * ViewPalette.listRowHeight

        Repeater {
            id: rows

            model: root.model

            CardOrderRow {
                id: row

                onDragged: () => root.model.drag(row.key)
                onDropped: () => root.model.drop()
                onEntered: index => root.model.enter(rows.itemAt(index).key)
                onMoveDownRequested: () => root.model.moveDown(row.key)
                onMoveUpRequested: () => root.model.moveUp(row.key)
            }
        }
    }
    SetupCell {
        SecondaryButton {
            objectName: "cardOrder.reset"
            text: qsTr("기본 순서로")
            onClicked: root.model.reset()
        }
    }
}
