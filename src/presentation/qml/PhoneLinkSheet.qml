// The key of the link to an Android phone, as a picture and as text, and what can be done with it.
import QtQuick
import QtQuick.Layouts
import Brimwatch

FocusScope {
    id: root

    required property PhoneLinkSheetModel model
    readonly property bool hasKey: root.model.linkText !== ""

    signal dismissed

    Accessible.name: qsTr("안드로이드 연결")
    Accessible.role: Accessible.Dialog
    Keys.onEnterPressed: root.dismissed()
    Keys.onEscapePressed: root.dismissed()
    Keys.onReturnPressed: root.dismissed()
    Window.onVisibilityChanged: {
        if (root.Window.visibility !== Window.Hidden)
            return;
        rotation.close();
        ending.close();
        closing.forceActiveFocus();
    }
    focus: true
    implicitHeight: column.implicitHeight + 48
    implicitWidth: 420

    Rectangle {
        anchors.fill: parent
        color: ViewPalette.surfaceFill
    }
    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.margins: 24
        anchors.right: parent.right
        anchors.top: parent.top
        spacing: 14

        PlainText {
            Accessible.role: Accessible.Heading
            font.bold: true
            font.pixelSize: Math.round(ViewPalette.headlineSize)
            objectName: "title"
            text: qsTr("안드로이드 연결")
        }
        QrCode {
            Accessible.ignored: implicitWidth === 0
            Accessible.name: qsTr("안드로이드 연결 QR")
            Accessible.role: Accessible.Graphic
            Layout.alignment: Qt.AlignHCenter
            objectName: "code"
            text: root.model.linkText
            visible: implicitWidth > 0
        }
        PlainText {
            Layout.fillWidth: true
            elide: Text.ElideNone
            font.pixelSize: Math.round(ViewPalette.controlSize)
            objectName: "instruction"
            text: qsTr("안드로이드 앱에서 이 QR을 찍거나 아래 코드를 붙여 넣어 주세요.")
            visible: root.hasKey
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: 10
            visible: root.hasKey

            Rectangle {
                Layout.fillWidth: true
                color: Qt.alpha(ViewPalette.primaryLabel, 0.06)
                implicitHeight: codeText.implicitHeight + 16
                radius: 8

                PhoneLinkCodeText {
                    id: codeText

                    anchors.left: parent.left
                    anchors.leftMargin: 10
                    anchors.right: parent.right
                    anchors.rightMargin: 10
                    anchors.top: parent.top
                    anchors.topMargin: 8
                    objectName: "codeText"
                    text: root.model.linkText
                }
            }
            // A click on this or the next ones leaves Enter to the button that closes.
            SecondaryButton {
                focusPolicy: Qt.TabFocus
                objectName: "phoneLink.copy"
                text: root.model.isCopied ? qsTr("복사했어요") : qsTr("복사")
                onClicked: root.model.copy()
            }
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: 6
            visible: root.hasKey

            Symbol {
                Layout.alignment: Qt.AlignTop
                Layout.preferredHeight: Math.round(ViewPalette.calloutSize * 1.2)
                Layout.preferredWidth: Layout.preferredHeight
                color: ViewPalette.secondaryLabel
                name: "exclamationmark.triangle.fill"
            }
            PlainText {
                Layout.fillWidth: true
                color: ViewPalette.secondaryLabel
                elide: Text.ElideNone
                font.pixelSize: Math.round(ViewPalette.calloutSize)
                objectName: "warning"
                text: qsTr("이 QR이 있으면 누구나 한도를 볼 수 있어요. 로그인 정보는 담겨 있지 않아요.")
                wrapMode: Text.Wrap
            }
        }
        PlainText {
            Layout.fillWidth: true
            color: ViewPalette.red
            elide: Text.ElideNone
            font.pixelSize: Math.round(ViewPalette.calloutSize)
            objectName: "problem"
            text: root.model.problem
            visible: text !== ""
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: 8

            SecondaryButton {
                enabled: !root.model.isChanging
                focusPolicy: Qt.TabFocus
                objectName: "phoneLink.rotate"
                text: qsTr("새 QR로 바꾸기")
                visible: root.hasKey
                onClicked: rotation.open()
            }
            SecondaryButton {
                enabled: !root.model.isChanging
                focusPolicy: Qt.TabFocus
                objectName: "phoneLink.disconnect"
                role: SecondaryButton.Destructive
                text: qsTr("연결 끊기")
                visible: root.hasKey
                onClicked: ending.open()
            }
            Item {
                Layout.fillWidth: true
            }
            ProminentButton {
                id: closing

                focus: true
                objectName: "phoneLink.close"
                text: qsTr("닫기")
                onClicked: root.dismissed()
            }
        }
    }
    ConfirmationDialog {
        id: rotation

        action: qsTr("새 QR로 바꾸기")
        message: qsTr("지금 연결한 안드로이드 폰은 더 이상 한도를 받지 못해요. 새 QR을 다시 찍어 주세요.")
        objectName: "rotation"
        title: qsTr("새 QR로 바꿀까요?")
        onConfirmed: root.model.rotate()
    }
    ConfirmationDialog {
        id: ending

        action: qsTr("연결 끊기")
        message: qsTr("보낸 한도를 지우고 이 QR을 더 쓸 수 없게 해요.")
        objectName: "ending"
        title: qsTr("안드로이드 연결을 끊을까요?")
        onConfirmed: root.model.disconnectLink()
    }
    Connections {
        target: root.model

        function onDismissed() {
            root.dismissed();
        }
    }
}
