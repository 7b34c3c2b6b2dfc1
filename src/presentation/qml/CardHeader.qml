// Whose limits a card shows.
import QtQuick
import QtQuick.Layouts
import Brimwatch

RowLayout {
    id: root

    required property string provider
    required property string title
    required property string plan
    required property string planIdentifier
    required property real metricsScale

    // Between its parts, but not before what fills the row.
    readonly property real gap: Math.round(8 * root.metricsScale)

    spacing: 0

    Capsule {
        Layout.preferredHeight: 10 * root.metricsScale
        Layout.preferredWidth: 10 * root.metricsScale
        color: root.provider === "claude" ? ViewPalette.indigo : ViewPalette.teal
        objectName: "providerDot"
    }
    PlainText {
        Layout.fillWidth: true
        Layout.leftMargin: root.gap
        Layout.maximumWidth: Math.ceil(implicitWidth)
        font.pixelSize: Math.round(ViewPalette.headlineSize * root.metricsScale)
        font.weight: Font.DemiBold
        objectName: "title"
        text: root.title
    }
    PlanChip {
        Layout.fillWidth: true
        Layout.leftMargin: root.gap
        Layout.maximumWidth: implicitWidth
        metricsScale: root.metricsScale
        objectName: root.planIdentifier
        plan: root.plan
    }
    Item {
        Layout.fillWidth: true
    }
}
