// A button that is only a sign. Space and Enter press it; a hint says what it does.
import QtQuick
import QtQuick.Templates as T
import Brimwatch

T.Button {
    id: root

    required property string symbol
    property string hint: ""
    property color ink: ViewPalette.secondaryLabel
    property real symbolSize: Math.round(ViewPalette.controlSize * 1.1)

    Accessible.description: root.hint
    Accessible.name: root.text
    Accessible.role: Accessible.Button
    Accessible.onPressAction: if (root.enabled)
        root.clicked()
    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    implicitHeight: root.symbolSize + 10
    implicitWidth: root.symbolSize + 10

    background: Rectangle {
        color: root.down ? ViewPalette.controlPressed : root.hovered ? ViewPalette.controlHovered : "transparent"
        radius: 6

        FocusRing {
            cornerRadius: 6
            visible: root.visualFocus
        }
    }
    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            color: root.hovered ? ViewPalette.primaryLabel : root.ink
            height: root.symbolSize
            name: root.symbol
            objectName: "symbol"
            width: root.symbolSize
        }
    }

    T.ToolTip {
        id: tip

        delay: 700
        implicitHeight: implicitContentHeight + 8
        implicitWidth: implicitContentWidth + 14
        margins: 6
        objectName: "hint"
        text: root.hint
        visible: root.hovered && !root.down && root.hint !== ""
        x: (root.width - width) / 2
        y: root.height + 4

        background: Rectangle {
            border.color: ViewPalette.popoverEdge
            color: ViewPalette.popoverFill
            radius: 5
        }
        contentItem: PlainText {
            font.pixelSize: Math.round(ViewPalette.captionSize)
            horizontalAlignment: Text.AlignHCenter
            text: tip.text
            verticalAlignment: Text.AlignVCenter
        }
    }
}
