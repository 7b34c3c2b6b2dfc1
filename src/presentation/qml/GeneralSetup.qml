// The section with the settings that stand for themselves.
import QtQuick
import Brimwatch

SetupSection {
    id: root

    required property GeneralSectionModel model
    readonly property alias updates: updates

    help: root.model.help
    objectName: "general"
    title: qsTr("일반")

    SetupCell {
        SetupPicker {
            chosen: root.model.theme
            identifier: "settings.appTheme"
            title: qsTr("테마")
            titles: root.model.themes
            onAsked: index => root.model.theme = index
        }
    }
    SetupCell {
        SetupPicker {
            chosen: root.model.display
            identifier: "settings.usageDisplay"
            title: qsTr("한도 표시")
            titles: root.model.displays
            onAsked: index => root.model.display = index
        }
    }
    SetupCell {
        SetupPicker {
            chosen: root.model.period
            identifier: "settings.recentUsage"
            title: qsTr("최근 소모량")
            titles: root.model.periods
            onAsked: index => root.model.period = index
        }
    }
    SetupCell {
        SetupPicker {
            chosen: root.model.language
            identifier: "settings.language"
            // In both, for whoever reads only one.
            title: "언어 · Language"
            titles: root.model.languages
            onAsked: index => root.model.language = index
        }
    }
    SetupCell {
        SetupSwitch {
            isOn: root.model.launchesAtLogin
            objectName: "settings.launchAtLogin"
            text: qsTr("로그인할 때 열기")
            onAsked: on => root.model.setLaunchesAtLogin(on)
        }
    }
    UpdatesSetup {
        id: updates

        model: root.model.updates
        objectName: "updates"
        visible: root.model.updates.isAvailable || root.model.updates.unavailabilityText !== ""
    }
}
