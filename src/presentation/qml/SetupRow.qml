// A label and what belongs to it: on one line, or below each other where that is too narrow.
import QtQuick
import QtQuick.Layouts

GridLayout {
    id: root

    property alias label: label.data
    default property alias content: content.data
    readonly property bool isOneLine: label.implicitWidth + root.columnSpacing + content.implicitWidth <= root.width

    Layout.fillWidth: true
    columnSpacing: 12
    columns: root.isOneLine ? 2 : 1
    rowSpacing: 2

    RowLayout {
        id: label

        Layout.fillWidth: true
        spacing: 4
    }
    RowLayout {
        id: content

        Layout.alignment: root.isOneLine ? Qt.AlignRight | Qt.AlignVCenter : Qt.AlignLeft
        Layout.fillWidth: !root.isOneLine
        spacing: 8
    }
}
