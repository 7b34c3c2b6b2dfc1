// Shows a folder where it lies.
import Brimwatch

SymbolButton {
    id: root

    required property string name

    hint: qsTr("Finder에서 보여 줘요")
    symbol: "folder"
    text: qsTr("%1 폴더").arg(root.name)
}
