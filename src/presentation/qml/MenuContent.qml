// What the popover shows: the cards of the accounts, and what can be done at once.
import QtQuick
import QtQuick.Layouts
import Brimwatch

Rectangle {
    id: root

    required property MenuContentModel model
    // Whether what lies behind the popover may show through around its corners.
    property bool rounded: true

    Keys.onDownPressed: cards.scrollDown()
    Keys.onUpPressed: cards.scrollUp()
    LayoutMirroring.childrenInherit: true
    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    color: ViewPalette.popoverFill
    focus: true
    height: Math.round(column.implicitHeight) + 24
    radius: root.rounded ? 12 : 0
    width: 270

    Rectangle {
        anchors.fill: parent
        border.color: ViewPalette.popoverEdge
        color: "transparent"
        objectName: "edge"
        radius: root.radius
    }
    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.margins: 12
        anchors.right: parent.right
        anchors.top: parent.top
        spacing: 12

        Image {
            Accessible.name: "Brimwatch?"
            Accessible.role: Accessible.Graphic
            Layout.preferredHeight: 20
            Layout.preferredWidth: implicitWidth * 20 / Math.max(1, implicitHeight)
            fillMode: Image.PreserveAspectFit
            mipmap: true
            objectName: "logo"
            source: ViewPalette.dark ? "qrc:/brimwatch/LogoLockupSmallDark.png" : "qrc:/brimwatch/LogoLockupSmall.png"
        }
        CardList {
            id: cards

            Layout.fillWidth: true
            canReorder: root.model.canReorder
            cards: root.model.cards
            maximumHeight: root.model.listHeight
            objectName: "cards"
            visible: !root.model.isEmpty
            onReorderChosen: root.model.reorderCards()
        }
        EmptyState {
            Layout.fillWidth: true
            objectName: "emptyState"
            text: root.model.emptyText
            visible: root.model.isEmpty
        }
        PlainText {
            Layout.fillWidth: true
            color: root.model.isSendingFailure ? ViewPalette.levelWarning : ViewPalette.secondaryLabel
            elide: Text.ElideNone
            font.pixelSize: Math.round(ViewPalette.captionSize)
            objectName: "sending"
            text: root.model.sendingText
            wrapMode: Text.Wrap
        }
        GridLayout {
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: column.width
            columnSpacing: 8
            columns: ViewPalette.accessibilitySize ? 1 : 3
            rowSpacing: 8

            SecondaryButton {
                Layout.fillWidth: true
                objectName: "menu.receiveNow"
                text: qsTr("지금 새로 받기")
                onClicked: root.model.receiveNow()
            }
            SecondaryButton {
                Layout.fillWidth: true
                objectName: "menu.openSetup"
                text: qsTr("설정…")
                onClicked: root.model.openSetup()
            }
            SecondaryButton {
                Layout.fillWidth: true
                objectName: "menu.quit"
                text: qsTr("종료")
                onClicked: root.model.quit()
            }
        }
    }
}
