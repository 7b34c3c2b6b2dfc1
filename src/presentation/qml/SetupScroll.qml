// The sections below each other, in a view that scrolls where they are higher than it. What the
// keyboard acts on is kept in sight.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

Flickable {
    id: root

    default property alias sections: column.data
    readonly property real margin: 20

    // At the top of the view, as far as the sections reach.
    function glideTo(section: Item): void {
        root.moveTo(Math.max(0, Math.min(column.y + section.y, root.contentHeight - root.height)));
    }
    // No further than needed.
    function glideIntoSight(item: Item): void {
        root.moveTo(root.placeWithSightOf(item));
    }
    function moveTo(place: real): void {
        glide.stop();
        if (ViewPalette.reducesMotion) {
            root.contentY = place;
        } else {
            glide.to = place;
            glide.start();
        }
    }
    function contains(item: Item): bool {
        for (let each = item; each !== null; each = each.parent)
            if (each === column)
                return true;
        return false;
    }
    function bringIntoSight(item: Item): void {
        if (item !== null && root.contains(item))
            root.contentY = root.placeWithSightOf(item);
    }
    // The nearest place of the view with all of that in it, and a margin around.
    function placeWithSightOf(item: Item): real {
        const top = item.mapToItem(column, 0, 0).y + column.y - root.margin;
        const bottom = top + item.height + 2 * root.margin;
        if (top < root.contentY)
            return Math.max(0, top);
        if (bottom > root.contentY + root.height)
            return Math.min(bottom - root.height, root.contentHeight - root.height);
        return root.contentY;
    }

    boundsBehavior: contentHeight > height ? Flickable.DragAndOvershootBounds : Flickable.StopAtBounds
    clip: true
    contentHeight: column.implicitHeight + 2 * root.margin
    onMovementStarted: glide.stop()

    T.ScrollBar.vertical: SlimScrollBar {
        id: scrollBar

        objectName: "scrollBar"
        stepSize: 48 / Math.max(1, root.contentHeight)
    }

    ColumnLayout {
        id: column

        spacing: 22
        width: root.width - 2 * root.margin
        x: root.margin
        y: root.margin
    }
    NumberAnimation {
        id: glide

        duration: 350
        easing.type: Easing.InOutQuad
        objectName: "glide"
        property: "contentY"
        target: root
    }
    Connections {
        target: root.Window.window

        function onActiveFocusItemChanged() {
            root.bringIntoSight(root.Window.activeFocusItem);
        }
    }
}
