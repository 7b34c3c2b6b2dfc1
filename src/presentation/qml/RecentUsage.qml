// What was used lately, in two lines that are read as one.
import QtQuick
import QtQuick.Layouts
import Brimwatch

ColumnLayout {
    id: root

    required property string title
    required property string text
    required property real metricsScale

    Accessible.name: root.title + " " + root.text
    Accessible.role: Accessible.StaticText
    spacing: 0

    PlainText {
        Accessible.ignored: true
        Layout.fillWidth: true
        font.pixelSize: Math.round(ViewPalette.captionSize * root.metricsScale)
        objectName: "recentTitle"
        text: root.title
    }
    PlainText {
        Accessible.ignored: true
        Layout.fillWidth: true
        font.pixelSize: Math.round(ViewPalette.captionSize * root.metricsScale)
        font.weight: Font.DemiBold
        objectName: "recentText"
        text: root.text
    }
}
