// Explains a section, in a bubble.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

SymbolButton {
    id: root

    required property string help
    required property string name
    property bool showsHelp: false

    symbol: "questionmark.circle"
    text: root.name
    onClicked: root.showsHelp = true

    T.Popup {
        id: bubble

        closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
        focus: true
        height: Math.min(implicitContentHeight + 2 * padding, root.Window.height - 2 * margins)
        margins: 12
        modal: true
        objectName: "helpBubble"
        padding: 14
        visible: root.showsHelp
        width: Math.min(340, root.Window.width - 2 * margins)
        x: (root.width - width) / 2
        y: root.height + 4
        onClosed: root.showsHelp = false

        T.Overlay.modal: Item {}
        background: Rectangle {
            border.color: ViewPalette.popoverEdge
            color: ViewPalette.popoverFill
            radius: 10
        }
        contentItem: SetupHelpText {
            focus: true
            text: root.help
        }
    }
}
