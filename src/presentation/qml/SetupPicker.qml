// A choice among a few titles, with its label.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

SetupRow {
    id: root

    required property string title
    required property var titles
    required property int chosen
    property string identifier: ""

    signal asked(int index)

    label: PlainText {
        Accessible.ignored: true
        Layout.fillWidth: true
        elide: Text.ElideNone
        font.pixelSize: Math.round(ViewPalette.controlSize)
        text: root.title
        wrapMode: Text.Wrap
    }

    T.ComboBox {
        id: box

        Accessible.name: root.title
        Accessible.role: Accessible.ComboBox
        Accessible.onPressAction: if (box.enabled)
            box.popup.open()
        Keys.onEnterPressed: box.popup.open()
        Keys.onReturnPressed: box.popup.open()
        currentIndex: root.chosen
        focusPolicy: Qt.StrongFocus
        hoverEnabled: true
        implicitHeight: implicitContentHeight + 8
        implicitWidth: implicitContentWidth + 16
        model: root.titles
        objectName: root.identifier
        // A new list, as of another language, chooses its first title.
        onModelChanged: box.currentIndex = Qt.binding(() => root.chosen)
        onActivated: index => root.asked(index)

        background: Rectangle {
            border.color: ViewPalette.separator
            border.width: ViewPalette.increasesContrast ? 1 : 0
            color: box.down ? ViewPalette.controlPressed : box.hovered ? ViewPalette.controlHovered : ViewPalette.controlFill
            radius: 6

            FocusRing {
                cornerRadius: 6
                visible: box.visualFocus
            }
        }
        contentItem: SetupPickerTitle {
            text: box.displayText
        }
        delegate: SetupPickerItem {}
        popup: SetupPickerList {
            box: box
        }
    }
}
