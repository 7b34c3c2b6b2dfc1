// How much of a limit is left, or used, as a bar.
import QtQuick
import Brimwatch

Item {
    id: root

    required property real fraction
    required property color tint
    required property string label
    required property string valueText

    Accessible.description: root.valueText
    Accessible.name: root.label
    Accessible.role: Accessible.ProgressBar
    implicitHeight: 10

    Capsule {
        anchors.fill: parent
        color: ViewPalette.tertiaryFill
        objectName: "track"
    }
    Capsule {
        anchors.left: parent.left
        color: root.tint
        height: parent.height
        objectName: "fill"
        visible: width > 0
        width: Math.max(0, Math.min(root.fraction, 1)) * parent.width
    }
}
