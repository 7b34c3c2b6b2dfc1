// The large figure of a card, and what was used lately beside it, or below it where texts are large.
import QtQuick
import QtQuick.Layouts
import Brimwatch

GridLayout {
    id: root

    required property string amount
    required property string amountSuffix
    required property string amountIdentifier
    required property bool hasRecentUsage
    required property string recentTitle
    required property string recentText
    required property string recentIdentifier
    required property real metricsScale

    columnSpacing: 0
    columns: ViewPalette.accessibilitySize ? 1 : 3
    rowSpacing: 8 * root.metricsScale

    Amount {
        Layout.fillWidth: true
        Layout.maximumWidth: Math.ceil(implicitWidth)
        amount: root.amount
        metricsScale: root.metricsScale
        objectName: root.amountIdentifier
        suffix: root.amountSuffix
    }
    // The room between them, and what is left of the row.
    Item {
        Layout.fillWidth: true
        Layout.minimumWidth: root.hasRecentUsage ? Math.round(12 * root.metricsScale) : 0
        visible: !ViewPalette.accessibilitySize
    }
    RecentUsage {
        Layout.fillWidth: false
        Layout.maximumWidth: root.width
        metricsScale: root.metricsScale
        objectName: root.recentIdentifier
        text: root.recentText
        title: root.recentTitle
        visible: root.hasRecentUsage
    }
}
