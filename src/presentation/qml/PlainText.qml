// A line of text that may come from anywhere: never markup, cut with dots where it is too long.
import QtQuick
import Brimwatch

Text {
    id: root

    Accessible.name: root.text
    Accessible.role: Accessible.StaticText
    color: ViewPalette.primaryLabel
    elide: Text.ElideRight
    textFormat: Text.PlainText
}
