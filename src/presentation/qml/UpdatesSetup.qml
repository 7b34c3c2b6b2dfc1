// Updates, within the general section: whether they come by themselves, and the answer to a check.
import QtQuick
import QtQuick.Layouts
import Brimwatch

SetupCell {
    id: root

    required property SetupUpdates model

    SetupSwitch {
        isOn: root.model.automaticallyUpdates
        objectName: "updates.automatic"
        text: qsTr("자동으로 업데이트")
        visible: root.model.isAvailable
        onAsked: on => root.model.automaticallyUpdates = on
    }
    SetupNote {
        color: root.model.needsAttention ? ViewPalette.levelWarning : ViewPalette.secondaryLabel
        objectName: "updates.status"
        text: root.model.statusText
        visible: root.model.isAvailable && text !== ""
    }
    Flow {
        Layout.fillWidth: true
        spacing: 8
        visible: root.model.isAvailable

        SecondaryButton {
            objectName: "updates.check"
            text: qsTr("지금 확인")
            onClicked: root.model.checkNow()
        }
        SecondaryButton {
            objectName: "updates.install"
            text: qsTr("설치")
            visible: root.model.canInstall
            onClicked: root.model.install()
        }
        SecondaryButton {
            objectName: "updates.skip"
            text: qsTr("이 버전 건너뛰기")
            visible: root.model.canSkip
            onClicked: root.model.skip()
        }
        SecondaryButton {
            objectName: "updates.page"
            text: qsTr("바뀐 점 보기")
            visible: root.model.hasPage
            onClicked: root.model.showPage()
        }
    }
    SetupNote {
        objectName: "updates.unavailable"
        text: root.model.unavailabilityText
        visible: !root.model.isAvailable && text !== ""
    }
}
