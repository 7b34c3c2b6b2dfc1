// What stands above the settings.
import QtQuick
import QtQuick.Layouts
import Brimwatch

ColumnLayout {
    id: root

    required property string promise
    required property string spokenPromise

    Layout.fillWidth: true
    spacing: 8

    Image {
        Accessible.name: "Brimwatch?"
        Accessible.role: Accessible.Graphic
        Layout.preferredHeight: 30
        Layout.preferredWidth: implicitWidth * 30 / Math.max(1, implicitHeight)
        fillMode: Image.PreserveAspectFit
        mipmap: true
        objectName: "logo"
        source: ViewPalette.dark ? "qrc:/brimwatch/LogoLockupDark.png" : "qrc:/brimwatch/LogoLockup.png"
    }
    SetupNote {
        Accessible.name: root.spokenPromise
        objectName: "promise"
        text: root.promise
        textFormat: Text.MarkdownText
    }
}
