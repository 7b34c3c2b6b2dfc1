// The cards below each other, in a list that scrolls where they are higher than it may become.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

T.Control {
    id: root

    required property var cards
    required property bool canReorder
    required property real maximumHeight

    signal reorderChosen

    // At that place of the window.
    function openMenu(position: point): void {
        if (root.canReorder)
            menu.popup(root, root.mapFromItem(null, position.x, position.y));
    }
    function scrollDown(): void {
        scrollBar.increase();
    }
    function scrollUp(): void {
        scrollBar.decrease();
    }

    Window.onVisibilityChanged: menu.close()
    focusPolicy: root.canReorder || scrollBar.visible ? Qt.TabFocus : Qt.NoFocus
    implicitHeight: Math.min(column.implicitHeight, root.maximumHeight)

    background: FocusRing {
        cornerRadius: 26 * 0.68
        visible: root.visualFocus
    }
    Flickable {
        id: list

        anchors.fill: parent
        boundsBehavior: contentHeight > height ? Flickable.DragAndOvershootBounds : Flickable.StopAtBounds
        clip: true
        contentHeight: column.implicitHeight
        objectName: "list"

        T.ScrollBar.vertical: SlimScrollBar {
            id: scrollBar

            height: root.height
            objectName: "scrollBar"
            parent: root
            stepSize: 48 / Math.max(1, list.contentHeight)
            x: root.mirrored ? -width - 2 : root.width + 2
        }

        ColumnLayout {
            id: column

            spacing: 9.6
            width: list.width

            Repeater {
                model: root.cards

                UsageCard {
                    Layout.fillWidth: true
                    objectName: "card"
                    onMenuRequested: position => root.openMenu(position)
                }
            }
        }
    }

    Shortcut {
        enabled: root.canReorder && root.activeFocus
        sequences: ["Menu", "Shift+F10"]
        onActivated: menu.popup(root, Qt.point(12, 12), reorder)
    }
    ContextMenu {
        id: menu

        objectName: "cardMenu"

        ContextMenuItem {
            id: reorder

            objectName: "menu.reorder"
            symbol: "arrow.up.arrow.down"
            text: qsTr("순서 바꾸기")
            onTriggered: root.reorderChosen()
        }
    }
}
