// The ground of a card.
import QtQuick
import Brimwatch

Rectangle {
    property real cornerRadius: 26
    property color fill: ViewPalette.cardFill

    color: fill
    radius: cornerRadius
}
