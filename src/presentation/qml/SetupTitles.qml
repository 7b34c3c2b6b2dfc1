// The titles to choose from, and which one is chosen.
import QtQuick

ListView {
    property int chosen: -1

    clip: true
    implicitHeight: contentHeight
}
