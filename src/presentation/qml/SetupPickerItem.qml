// One of the titles to choose from.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

T.ItemDelegate {
    id: root

    required property int index
    required property string modelData
    readonly property SetupTitles list: ListView.view as SetupTitles
    readonly property bool isChosen: root.list?.chosen === root.index

    Accessible.name: root.text
    Accessible.role: Accessible.ListItem
    Accessible.selectable: true
    Accessible.selected: root.isChosen
    Accessible.onPressAction: if (root.enabled)
        root.clicked()
    highlighted: ListView.isCurrentItem
    hoverEnabled: true
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    leftPadding: 10
    padding: 5
    rightPadding: 8
    text: root.modelData
    width: root.list?.width ?? 0

    background: Rectangle {
        color: root.highlighted || root.hovered ? ViewPalette.controlHovered : "transparent"
        radius: 5
    }
    contentItem: RowLayout {
        spacing: 10

        PlainText {
            Accessible.ignored: true
            Layout.fillWidth: true
            font.pixelSize: Math.round(ViewPalette.controlSize)
            text: root.text
        }
        Symbol {
            Layout.preferredHeight: Math.round(ViewPalette.controlSize)
            Layout.preferredWidth: Layout.preferredHeight
            color: ViewPalette.levelComfortable
            name: "checkmark.circle.fill"
            opacity: root.isChosen ? 1 : 0
        }
    }
}
