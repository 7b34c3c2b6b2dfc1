// A line of text to write.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

T.TextField {
    id: root

    required property string label

    Accessible.description: root.placeholderText
    Accessible.name: root.label
    Accessible.role: Accessible.EditableText
    Layout.fillWidth: true
    color: ViewPalette.primaryLabel
    font.pixelSize: Math.round(ViewPalette.controlSize)
    implicitHeight: Math.ceil(contentHeight) + 14
    leftPadding: 9
    placeholderTextColor: ViewPalette.secondaryLabel
    rightPadding: 9
    selectByMouse: true
    selectedTextColor: ViewPalette.brandPaper
    selectionColor: ViewPalette.brandDeepTeal
    verticalAlignment: TextInput.AlignVCenter

    background: Rectangle {
        border.color: ViewPalette.separator
        color: Qt.alpha(ViewPalette.primaryLabel, 0.05)
        radius: 6

        FocusRing {
            cornerRadius: 6
            visible: root.activeFocus
        }
    }

    PlainText {
        Accessible.ignored: true
        anchors.fill: parent
        anchors.leftMargin: root.leftPadding
        anchors.rightMargin: root.rightPadding
        color: root.placeholderTextColor
        font: root.font
        objectName: "prompt"
        text: root.placeholderText
        verticalAlignment: Text.AlignVCenter
        visible: root.text === "" && root.preeditText === ""
    }
}
