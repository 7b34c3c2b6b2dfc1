// The button that the Enter key presses.
import QtQuick
import Brimwatch

SecondaryButton {
    id: root

    background: Rectangle {
        color: root.down ? ViewPalette.brandNavySurface : ViewPalette.brandDeepTeal
        radius: 6

        FocusRing {
            cornerRadius: 6
            visible: root.visualFocus
        }
    }
    contentItem: ShrinkingText {
        Accessible.ignored: true
        color: ViewPalette.brandPaper
        horizontalAlignment: Text.AlignHCenter
        size: ViewPalette.controlSize
        text: root.text
        verticalAlignment: Text.AlignVCenter
    }
}
