// A text that goes with a section, as many lines as it needs.
import QtQuick
import QtQuick.Layouts
import Brimwatch

PlainText {
    Layout.fillWidth: true
    color: ViewPalette.secondaryLabel
    elide: Text.ElideNone
    font.pixelSize: Math.round(ViewPalette.calloutSize)
    wrapMode: Text.Wrap
}
