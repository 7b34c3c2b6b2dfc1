// The small pencil beside a name.
import Brimwatch

SymbolButton {
    id: root

    required property string name

    symbol: "pencil"
    symbolSize: Math.round(ViewPalette.calloutSize * 0.95)
    text: qsTr("%1 이름 바꾸기").arg(root.name)
}
