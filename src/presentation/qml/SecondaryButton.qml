// A button that does not press itself forward. Space and Enter press it.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

T.Button {
    id: root

    enum Role { Plain, Destructive }

    property int role: SecondaryButton.Plain

    Accessible.name: root.text
    Accessible.role: Accessible.Button
    Accessible.onPressAction: if (root.enabled)
        root.clicked()
    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()
    focusPolicy: Qt.StrongFocus
    font.pixelSize: Math.round(ViewPalette.controlSize)
    hoverEnabled: true
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    leftPadding: 9
    opacity: root.enabled ? 1 : 0.4
    padding: 4
    rightPadding: 9

    background: Rectangle {
        border.color: ViewPalette.separator
        border.width: ViewPalette.increasesContrast ? 1 : 0
        color: root.down ? ViewPalette.controlPressed : root.hovered ? ViewPalette.controlHovered : ViewPalette.controlFill
        radius: 6

        Rectangle {
            anchors.fill: parent
            color: ViewPalette.red
            objectName: "tint"
            opacity: 0.12
            radius: 6
            visible: root.role === SecondaryButton.Destructive
        }
        FocusRing {
            cornerRadius: 6
            visible: root.visualFocus
        }
    }
    contentItem: ShrinkingText {
        Accessible.ignored: true
        color: root.role === SecondaryButton.Destructive ? ViewPalette.red : ViewPalette.primaryLabel
        horizontalAlignment: Text.AlignHCenter
        size: ViewPalette.controlSize
        text: root.text
        verticalAlignment: Text.AlignVCenter
    }
}
