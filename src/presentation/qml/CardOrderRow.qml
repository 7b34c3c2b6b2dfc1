// A card in the list of their order. It follows the pointer while it is dragged, and glides to its
// place by a spring that needs half a second for a swing, damped to 0.85 of where it would not
// swing at all.
import QtQuick
import Brimwatch

MovableRow {
    id: root

    required property int index
    required property string key
    required property string title
    required property bool isDragged
    // While it is held: that it is, by which place of it, and where the pointer is in the list.
    property bool isHeld: false
    property real grip: 0
    property real pointer: 0

    signal dragged
    signal entered(int index)
    signal dropped

    function follow(position: real): void {
        root.pointer = position;
        if (!root.isDragged)
            root.dragged();
        const last = Math.round(root.parent.implicitHeight / root.height) - 1;
        const row = Math.max(0, Math.min(Math.floor(position / root.height), last));
        if (row !== root.index)
            root.entered(row);
    }
    function release(): void {
        root.isHeld = false;
        root.dropped();
    }

    Accessible.focusable: true
    Accessible.name: root.title
    Accessible.role: Accessible.ListItem
    Keys.onPressed: event => {
        const moves = event.modifiers === Qt.AltModifier;
        event.accepted = moves && (event.key === Qt.Key_Up || event.key === Qt.Key_Down);
        if (moves && event.key === Qt.Key_Up)
            root.moveUpRequested();
        if (moves && event.key === Qt.Key_Down)
            root.moveDownRequested();
    }
    activeFocusOnTab: true
    anchors.left: parent?.left
    anchors.right: parent?.right
    height: ViewPalette.listRowHeight
    moveDownText: qsTr("아래로 옮기기")
    moveUpText: qsTr("위로 옮기기")
    name: root.title
    objectName: "cardOrder.row"
    y: root.isDragged ? Math.max(0, Math.min(root.pointer - root.grip, root.parent.implicitHeight - root.height)) : root.index * root.height
    z: root.isDragged ? 1 : 0

    Behavior on y {
        enabled: !root.isHeld

        SpringAnimation {
            damping: 0.342
            epsilon: 0.25
            spring: 2.53
        }
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        border.color: ViewPalette.separator
        color: ViewPalette.popoverFill
        radius: 8
        visible: root.isDragged
    }
    FocusRing {
        anchors.margins: 2
        cornerRadius: 6
        visible: root.activeFocus
    }
    Symbol {
        id: sign

        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        color: ViewPalette.secondaryLabel
        height: Math.round(ViewPalette.controlSize)
        name: "line.3.horizontal"
        objectName: "grip"
        width: height
    }
    PlainText {
        Accessible.ignored: true
        anchors.left: sign.right
        anchors.leftMargin: 10
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Math.round(ViewPalette.controlSize)
        objectName: "title"
        text: root.title
    }
    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: 12
        anchors.right: parent.right
        color: ViewPalette.separator
        height: 1
        visible: root.index > 0 && !root.isDragged
    }
    MouseArea {
        anchors.fill: parent
        cursorShape: root.isDragged ? Qt.ClosedHandCursor : Qt.OpenHandCursor
        objectName: "dragArea"
        preventStealing: true
        onCanceled: root.release()
        onPositionChanged: mouse => {
            if (root.isDragged || Math.abs(mouse.y - root.grip) >= Application.styleHints.startDragDistance)
                root.follow(mapToItem(root.parent, 0, mouse.y).y);
        }
        onPressed: mouse => {
            root.forceActiveFocus();
            root.grip = mouse.y;
            root.isHeld = true;
        }
        onReleased: root.release()
    }
}
