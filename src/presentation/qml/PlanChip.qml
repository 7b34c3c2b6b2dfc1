// The name of a subscription, in a capsule.
import QtQuick
import Brimwatch

Capsule {
    id: root

    required property string plan
    required property real metricsScale

    Accessible.name: root.plan
    Accessible.role: Accessible.StaticText
    color: ViewPalette.tertiaryFill
    implicitHeight: label.implicitHeight + 6 * root.metricsScale
    implicitWidth: Math.ceil(label.implicitWidth + 16 * root.metricsScale)

    PlainText {
        id: label

        Accessible.ignored: true
        anchors.fill: parent
        anchors.leftMargin: 8 * root.metricsScale
        anchors.rightMargin: 8 * root.metricsScale
        color: ViewPalette.secondaryLabel
        font.pixelSize: Math.round(ViewPalette.captionSize * root.metricsScale)
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        objectName: "planText"
        text: root.plan
        verticalAlignment: Text.AlignVCenter
    }
}
