// The shorter limit of a card that has two.
import QtQuick
import Brimwatch

Item {
    id: root

    required property string value
    required property bool passed
    required property int level
    required property string resetText
    required property string resetLabel
    required property real metricsScale
    readonly property real size: ViewPalette.subheadlineSize * root.metricsScale
    readonly property real spacing: 8 * root.metricsScale
    readonly property real fit: Math.min(1, (root.width - 2 * root.spacing) / (title.naturalWidth + figure.naturalWidth + reset.naturalWidth))

    implicitHeight: title.implicitHeight
    implicitWidth: title.naturalWidth + figure.naturalWidth + reset.naturalWidth + 2 * root.spacing

    ShrinkingText {
        id: title

        anchors.left: parent.left
        color: ViewPalette.secondaryLabel
        objectName: "fiveHourTitle"
        size: root.size
        text: qsTr("5시간")
        width: naturalWidth * root.fit
    }
    ShrinkingText {
        id: figure

        anchors.baseline: title.baseline
        anchors.left: title.right
        anchors.leftMargin: root.spacing
        color: root.passed ? ViewPalette.secondaryLabel : ViewPalette.fiveHourInks[root.level]
        font.weight: Font.DemiBold
        objectName: "fiveHourValue"
        size: root.size
        text: root.value
        width: naturalWidth * root.fit
    }
    ShrinkingText {
        id: reset

        Accessible.name: root.resetLabel
        anchors.baseline: title.baseline
        anchors.left: figure.right
        anchors.leftMargin: root.spacing
        color: ViewPalette.secondaryLabel
        objectName: "fiveHourResetText"
        size: root.size
        text: root.resetText
        visible: text !== "" && !root.passed
        width: naturalWidth * root.fit
    }
}
