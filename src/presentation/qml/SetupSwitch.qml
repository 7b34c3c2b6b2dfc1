// A switch with its label. It shows what is so, which a press only asks to change.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Brimwatch

T.CheckBox {
    id: root

    required property bool isOn
    property bool showsLabel: true
    readonly property real knob: Math.round(15 * Math.max(1, ViewPalette.controlSize / 13))

    signal asked(bool on)

    Accessible.checkable: true
    // Of itself it does not tell of a change that comes by `checkState`.
    Accessible.checked: root.isOn
    Accessible.name: root.text
    Accessible.role: Accessible.CheckBox
    Accessible.onPressAction: if (root.enabled)
        root.clicked()
    Accessible.onToggleAction: if (root.enabled)
        root.clicked()
    Keys.onEnterPressed: root.clicked()
    Keys.onReturnPressed: root.clicked()
    Layout.fillWidth: root.showsLabel
    checkState: root.isOn ? Qt.Checked : Qt.Unchecked
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    implicitHeight: implicitContentHeight
    implicitWidth: implicitContentWidth
    nextCheckState: () => root.checkState
    opacity: root.enabled ? 1 : 0.4
    onClicked: root.asked(!root.isOn)

    contentItem: RowLayout {
        spacing: 12

        PlainText {
            Accessible.ignored: true
            Layout.fillWidth: true
            elide: Text.ElideNone
            font.pixelSize: Math.round(ViewPalette.controlSize)
            objectName: "label"
            text: root.text
            visible: root.showsLabel
            wrapMode: Text.Wrap
        }
        Capsule {
            color: root.isOn ? ViewPalette.levelComfortable : ViewPalette.tertiaryFill
            implicitHeight: root.knob + 4
            implicitWidth: 2 * root.knob + 4
            objectName: "track"

            Capsule {
                color: "white"
                height: root.knob
                objectName: "knob"
                width: root.knob
                x: root.isOn ? parent.width - width - 2 : 2
                y: 2

                Behavior on x {
                    NumberAnimation {
                        duration: 120
                    }
                }
            }
            FocusRing {
                cornerRadius: height / 2
                visible: root.visualFocus
            }
        }
    }
}
