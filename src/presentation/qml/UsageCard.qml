// What is left of one account.
import QtQuick
import QtQuick.Layouts
import Brimwatch

Item {
    id: root

    required property string provider
    required property string identifierSuffix
    required property string title
    required property string plan
    required property bool hasMainWindow
    required property string amount
    required property string amountSuffix
    required property real gaugeFraction
    required property string gaugeLabel
    required property string gaugeValue
    required property int level
    required property string statusText
    required property string statusSymbol
    required property string resetText
    required property string resetLabel
    required property bool hasSecondWindow
    required property string fiveHourText
    required property bool fiveHourPassed
    required property int fiveHourLevel
    required property string fiveHourResetText
    required property string fiveHourResetLabel
    required property bool hasRecentUsage
    required property string recentTitle
    required property string recentText
    required property string credit
    required property string creditLabel
    required property string freshness
    required property bool needsAttention

    property string identifierPrefix: "menu"
    property real metricsScale: 0.68
    property alias fill: background.fill

    signal menuRequested(point position)

    Accessible.name: root.title
    Accessible.role: Accessible.Grouping
    implicitHeight: Math.round(column.implicitHeight + 36 * root.metricsScale)

    CardBackground {
        id: background

        anchors.fill: parent
        cornerRadius: 26 * root.metricsScale
        objectName: "cardBackground"
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => root.menuRequested(eventPoint.scenePosition)
    }
    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.margins: 18 * root.metricsScale
        anchors.right: parent.right
        anchors.top: parent.top
        spacing: 14 * root.metricsScale

        CardHeader {
            metricsScale: root.metricsScale
            plan: root.plan
            planIdentifier: root.identifierPrefix + ".plan." + root.identifierSuffix
            provider: root.provider
            title: root.title
        }
        ColumnLayout {
            objectName: "mainBlock"
            spacing: 10 * root.metricsScale
            visible: root.hasMainWindow

            AmountRow {
                amount: root.amount
                amountIdentifier: root.identifierPrefix + ".subscription." + root.identifierSuffix
                amountSuffix: root.amountSuffix
                hasRecentUsage: root.hasRecentUsage
                metricsScale: root.metricsScale
                recentIdentifier: root.identifierPrefix + ".recentUsage." + root.identifierSuffix
                recentText: root.recentText
                recentTitle: root.recentTitle
            }
            ProgressBar {
                Layout.fillWidth: true
                Layout.preferredHeight: 10 * root.metricsScale
                fraction: root.gaugeFraction
                label: root.gaugeLabel
                objectName: root.identifierPrefix + ".gauge." + root.identifierSuffix
                tint: ViewPalette.gaugeTints[root.level]
                valueText: root.gaugeValue
            }
            StatusRow {
                Layout.fillWidth: true
                level: root.level
                metricsScale: root.metricsScale
                resetLabel: root.resetLabel
                resetText: root.resetText
                statusSymbol: root.statusSymbol
                statusText: root.statusText
            }
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: 1
            color: ViewPalette.separator
            objectName: "divider"
            visible: root.hasSecondWindow
        }
        FiveHourRow {
            Layout.fillWidth: true
            level: root.fiveHourLevel
            metricsScale: root.metricsScale
            objectName: "fiveHourRow"
            passed: root.fiveHourPassed
            resetLabel: root.fiveHourResetLabel
            resetText: root.fiveHourResetText
            value: root.fiveHourText
            visible: root.hasSecondWindow
        }
        CreditRow {
            credit: root.credit
            label: root.creditLabel
            metricsScale: root.metricsScale
            objectName: "creditRow"
            visible: root.credit !== ""
        }
        FreshnessLabel {
            Layout.fillWidth: true
            metricsScale: root.metricsScale
            needsAttention: root.needsAttention
            text: root.freshness
        }
    }
}
