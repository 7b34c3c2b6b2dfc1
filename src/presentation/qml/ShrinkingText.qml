// A line of text that becomes smaller where it is narrower than it would be, down to a factor of its
// size, before it is cut.
import QtQuick
import Brimwatch

PlainText {
    id: root

    required property real size
    property real minimumFactor: 0.8
    // As wide as it would be by itself.
    readonly property real naturalWidth: Math.ceil(implicitWidth)

    font.pixelSize: Math.round(root.size)
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: Math.round(root.size * root.minimumFactor)
}
