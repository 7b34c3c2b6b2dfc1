// What is left of an account's credits, read as one.
import QtQuick
import QtQuick.Layouts
import Brimwatch

RowLayout {
    id: root

    required property string credit
    required property string label
    required property real metricsScale

    Accessible.name: root.label
    Accessible.role: Accessible.StaticText
    spacing: 4 * root.metricsScale

    PlainText {
        Accessible.ignored: true
        color: ViewPalette.secondaryLabel
        font.pixelSize: Math.round(ViewPalette.subheadlineSize * root.metricsScale)
        objectName: "creditTitle"
        text: qsTr("크레딧")
    }
    PlainText {
        Accessible.ignored: true
        Layout.fillWidth: true
        color: ViewPalette.levelComfortable
        font.pixelSize: Math.round(ViewPalette.subheadlineSize * root.metricsScale)
        font.weight: Font.DemiBold
        objectName: "creditValue"
        text: root.credit
    }
}
