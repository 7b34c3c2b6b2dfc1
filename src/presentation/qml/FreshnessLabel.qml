// How old the figures of a card are, and what brings new ones.
import QtQuick
import Brimwatch

Item {
    id: root

    required property string text
    required property bool needsAttention
    required property real metricsScale

    implicitHeight: label.implicitHeight

    FontMetrics {
        id: line

        font: label.font
    }
    Symbol {
        id: symbol

        anchors.left: parent.left
        anchors.verticalCenter: label.top
        anchors.verticalCenterOffset: label.baselineOffset - line.xHeight / 2
        color: root.needsAttention ? ViewPalette.orange : ViewPalette.secondaryLabel
        height: Math.round(ViewPalette.footnoteSize * root.metricsScale * 1.3)
        name: root.needsAttention ? "exclamationmark.triangle.fill" : "laptopcomputer"
        objectName: "freshnessSymbol"
        width: height
    }
    PlainText {
        id: label

        anchors.left: symbol.right
        anchors.leftMargin: 6 * root.metricsScale
        anchors.right: parent.right
        color: ViewPalette.secondaryLabel
        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.footnoteSize * root.metricsScale)
        objectName: "freshness"
        text: root.text
        wrapMode: Text.Wrap
    }
}
