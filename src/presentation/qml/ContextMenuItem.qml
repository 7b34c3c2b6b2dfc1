// A row of a context menu, with a sign before its text.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

T.MenuItem {
    id: root

    required property string symbol

    Accessible.name: root.text
    Accessible.role: Accessible.MenuItem
    Accessible.onPressAction: if (root.enabled)
        root.triggered()
    Keys.onEnterPressed: root.triggered()
    Keys.onReturnPressed: root.triggered()
    hoverEnabled: true
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    padding: 5

    background: Rectangle {
        color: root.highlighted || root.hovered ? ViewPalette.controlHovered : "transparent"
        radius: 5
    }
    contentItem: RowLayout {
        spacing: 6

        Symbol {
            Layout.preferredHeight: Math.round(ViewPalette.controlSize)
            Layout.preferredWidth: height
            color: ViewPalette.primaryLabel
            name: root.symbol
            objectName: "symbol"
        }
        PlainText {
            Accessible.ignored: true
            Layout.fillWidth: true
            font.pixelSize: Math.round(ViewPalette.controlSize)
            text: root.text
        }
    }
}
