// The title that is chosen, and that there are others.
import QtQuick
import Brimwatch

Item {
    id: root

    required property string text

    implicitHeight: title.implicitHeight
    implicitWidth: title.implicitWidth + sign.width + 8

    PlainText {
        id: title

        Accessible.ignored: true
        anchors.left: parent.left
        anchors.leftMargin: 9
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Math.round(ViewPalette.controlSize)
        objectName: "chosenTitle"
        text: root.text
    }
    Symbol {
        id: sign

        anchors.right: parent.right
        anchors.rightMargin: 7
        anchors.verticalCenter: parent.verticalCenter
        color: ViewPalette.secondaryLabel
        height: Math.round(ViewPalette.controlSize * 0.8)
        name: "chevron.up.chevron.down"
        width: height
    }
}
