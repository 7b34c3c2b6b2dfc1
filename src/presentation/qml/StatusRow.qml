// What the main limit of a card means, and when it begins anew.
import QtQuick
import Brimwatch

Item {
    id: root

    required property int level
    required property string statusText
    required property string statusSymbol
    required property string resetText
    required property string resetLabel
    required property real metricsScale
    readonly property real size: ViewPalette.subheadlineSize * root.metricsScale
    readonly property real spacing: 8 * root.metricsScale
    readonly property real fit: Math.min(1, (root.width - status.x - root.spacing) / (status.naturalWidth + reset.naturalWidth))

    implicitHeight: status.implicitHeight
    implicitWidth: symbol.width + status.naturalWidth + reset.naturalWidth + 2 * root.spacing

    Symbol {
        id: symbol

        anchors.left: parent.left
        anchors.verticalCenter: status.verticalCenter
        color: ViewPalette.statusInks[root.level]
        height: Math.round(root.size * 1.2)
        name: root.statusSymbol
        objectName: "statusSymbol"
        width: height
    }
    ShrinkingText {
        id: status

        anchors.left: symbol.right
        anchors.leftMargin: 4 * root.metricsScale
        color: ViewPalette.statusInks[root.level]
        font.weight: Font.DemiBold
        objectName: "statusText"
        size: root.size
        text: root.statusText
        width: naturalWidth * root.fit
    }
    ShrinkingText {
        id: reset

        Accessible.name: root.resetLabel
        anchors.baseline: status.baseline
        anchors.left: status.right
        anchors.leftMargin: root.spacing
        color: ViewPalette.secondaryLabel
        font.weight: Font.DemiBold
        objectName: "resetText"
        size: root.size
        text: root.resetText
        visible: text !== ""
        width: naturalWidth * root.fit
    }
}
