// The titles to choose from, over the picker.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

T.Popup {
    id: root

    required property T.ComboBox box

    height: Math.min(implicitContentHeight + 2 * padding, root.box.Window.height - 2 * margins)
    margins: 6
    padding: 4
    width: Math.max(root.box.width, Math.round(ViewPalette.controlSize * 12))
    x: root.box.width - width

    background: Rectangle {
        border.color: ViewPalette.popoverEdge
        color: ViewPalette.popoverFill
        radius: 8
    }
    contentItem: SetupTitles {
        chosen: root.box.currentIndex
        currentIndex: root.box.highlightedIndex
        model: root.visible ? root.box.delegateModel : null
    }
}
