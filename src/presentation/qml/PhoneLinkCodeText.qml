// The text of the link, to be read and selected: as many lines as it needs, broken anywhere.
import QtQuick
import Brimwatch

TextEdit {
    id: root

    Accessible.description: root.text
    Accessible.name: qsTr("연결 코드")
    Accessible.readOnly: true
    Accessible.role: Accessible.EditableText
    color: ViewPalette.primaryLabel
    font.family: "monospace"
    font.pixelSize: Math.round(ViewPalette.footnoteSize)
    readOnly: true
    selectByMouse: true
    selectionColor: ViewPalette.focusRing
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.WrapAnywhere
}
