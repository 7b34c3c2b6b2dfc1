// The section with the order of the cards, whose rows are dragged to their places.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupSection {
    id: root

    required property CardOrderSectionModel model
    // Of each of them: what the highest needs.
    property real rowHeight: ViewPalette.listRowHeight

    // One that has the focus moved by itself.
    signal rowGlided(Item row)

    function measure(): void {
        const all = [];
        for (let index = 0; index < rows.count; ++index)
            all.push(rows.itemAt(index) as CardOrderRow);
        const there = all.filter(row => row !== null);
        root.rowHeight = Math.max(ViewPalette.listRowHeight, ...there.map(row => row.neededHeight));
        there.forEach(row => row.height = root.rowHeight);
    }

    help: qsTr("줄을 끌어서 메뉴 창 카드의 순서를 바꿔요. 메뉴 창에서 카드를 오른쪽 클릭해 '순서 바꾸기'를 눌러도 여기로 와요. 새로 연결한 계정은 맨 아래에 붙어요. iPhone 홈 카드 순서와는 따로 정해요.")
    objectName: "menuCardOrder"
    title: qsTr("메뉴 카드 순서")
    visible: root.model.isShown

    Item {
        Accessible.name: root.title
        Accessible.role: Accessible.List
        Layout.fillWidth: true
        implicitHeight: rows.count * root.rowHeight

        Repeater {
            id: rows

            model: root.model
            onItemAdded: root.measure()
            onItemRemoved: root.measure()

            CardOrderRow {
                id: row

                onDragged: () => root.model.drag(row.key)
                onDropped: () => root.model.drop()
                onEntered: index => root.model.enter(rows.itemAt(index).key)
                onGlided: () => root.rowGlided(row)
                onNeededHeightChanged: () => root.measure()
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
