// An account in the settings: where it lies, what it is called, and how it stands.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupCell {
    id: root

    required property string recordId
    required property string name
    required property string spokenName
    required property string statusText
    required property string statusSymbol
    required property int statusTone
    default property alias controls: row.content

    signal revealAsked
    signal renameAsked

    Accessible.description: root.statusText
    Accessible.name: root.spokenName
    Accessible.role: Accessible.Grouping
    objectName: "subscription." + root.recordId

    SetupRow {
        id: row

        label: [
            LocationButton {
                name: root.spokenName
                objectName: "location"
                onClicked: root.revealAsked()
            },
            PlainText {
                Layout.fillWidth: true
                Layout.maximumWidth: Math.ceil(implicitWidth)
                elide: Text.ElideNone
                font.pixelSize: Math.round(ViewPalette.controlSize)
                objectName: "name"
                text: root.name
                wrapMode: Text.Wrap
            },
            UsageRenameIcon {
                name: root.spokenName
                objectName: "usageName.edit." + root.recordId
                onClicked: root.renameAsked()
            },
            Item {
                Layout.fillWidth: true
            }
        ]

        Symbol {
            Layout.preferredHeight: Math.round(ViewPalette.controlSize * 1.15)
            Layout.preferredWidth: Layout.preferredHeight
            color: ViewPalette.accountInks[root.statusTone]
            name: root.statusSymbol
            objectName: "statusSymbol"
            visible: root.statusSymbol !== ""
        }
        PlainText {
            Layout.fillWidth: true
            color: ViewPalette.accountInks[root.statusTone]
            elide: Text.ElideNone
            font.pixelSize: Math.round(ViewPalette.calloutSize)
            objectName: "status"
            text: root.statusText
            visible: text !== ""
            wrapMode: Text.Wrap
        }
        Item {
            Layout.fillWidth: true
            visible: !row.isOneLine && root.statusText === ""
        }
    }
}
