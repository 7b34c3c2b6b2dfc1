// The large figure of a card with its unit, which shrink together.
import QtQuick
import Brimwatch

Item {
    id: root

    required property string amount
    required property string suffix
    required property real metricsScale
    readonly property real blank: ViewPalette.suffixSize * root.metricsScale / 4
    readonly property real fit: Math.min(1, (root.width - root.blank) / (figure.naturalWidth + unit.naturalWidth))

    Accessible.name: root.amount + " " + root.suffix
    Accessible.role: Accessible.StaticText
    implicitHeight: figure.implicitHeight
    implicitWidth: figure.naturalWidth + root.blank + unit.naturalWidth

    ShrinkingText {
        id: figure

        Accessible.ignored: true
        anchors.left: parent.left
        font.weight: Font.Bold
        minimumFactor: 0.5
        objectName: "amount"
        size: ViewPalette.amountSize * root.metricsScale
        text: root.amount
        width: naturalWidth * root.fit
    }
    ShrinkingText {
        id: unit

        Accessible.ignored: true
        anchors.baseline: figure.baseline
        anchors.left: figure.right
        anchors.leftMargin: root.blank
        font.weight: Font.DemiBold
        minimumFactor: 0.5
        objectName: "amountSuffix"
        size: ViewPalette.suffixSize * root.metricsScale
        text: root.suffix
        width: naturalWidth * root.fit
    }
}
