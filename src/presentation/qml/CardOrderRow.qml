// A card in the list of their order, whose rows are all as high as each other. It follows the
// pointer while it is dragged, and glides to its place by a spring, or is there at once where motion
// is not wanted.
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
    // Its top, in rows from that of the list.
    property real place: root.isDragged ? Math.max(0, Math.min((root.pointer - root.grip) / root.height, root.lastPlace)) : root.index
    readonly property real lastPlace: Math.round((root.parent?.implicitHeight ?? 0) / root.height) - 1
    // Of a row by itself, with all of its title.
    readonly property real neededHeight: Math.max(ViewPalette.listRowHeight, Math.ceil(label.implicitHeight) + 10)

    signal dragged
    signal entered(int index)
    signal dropped
    // It moved by itself while it has the focus.
    signal glided

    function follow(position: real): void {
        root.pointer = position;
        if (!root.isDragged)
            root.dragged();
        const row = Math.max(0, Math.min(Math.floor(position / root.height), root.lastPlace));
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
    moveDownText: qsTr("아래로 옮기기")
    moveUpText: qsTr("위로 옮기기")
    name: root.title
    objectName: "cardOrder.row"
    y: root.place * root.height
    z: root.isDragged ? 1 : 0
    onYChanged: {
        if (root.activeFocus && !root.isHeld)
            root.glided();
    }

    Behavior on place {
        enabled: !root.isHeld && !ViewPalette.reducesMotion

        SpringAnimation {
            damping: ViewPalette.rowDamping
            epsilon: 0.007
            spring: ViewPalette.rowSpring
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
        id: label

        Accessible.ignored: true
        anchors.left: sign.right
        anchors.leftMargin: 10
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.controlSize)
        objectName: "title"
        text: root.title
        wrapMode: Text.Wrap
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
