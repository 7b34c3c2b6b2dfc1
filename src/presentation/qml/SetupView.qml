// The settings: all sections, and the dialogs and sheets that they open.
import QtQuick
import Brimwatch

FocusScope {
    id: root

    required property SetupViewModel model
    readonly property alias contentHeight: scroll.contentHeight

    LayoutMirroring.childrenInherit: true
    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    focus: true
    implicitHeight: root.contentHeight
    implicitWidth: 460

    Rectangle {
        anchors.fill: parent
        color: ViewPalette.surfaceFill
        objectName: "surface"
    }
    SetupScroll {
        id: scroll

        anchors.fill: parent
        objectName: "scroll"

        SetupHeader {
            promise: root.model.promise
            spokenPromise: root.model.spokenPromise
        }
        ClaudeSetup {
            model: root.model.claude
            objectName: "claude"
            onAddAsked: root.model.addFolder.openForClaude()
            onRenameAsked: (recordId, givenName, originalName) => naming.open(recordId, givenName, originalName)
        }
        CodexSetup {
            model: root.model.codex
            objectName: "codex"
            onAddAsked: root.model.addFolder.openForCodex()
            onRenameAsked: (recordId, givenName, originalName) => naming.open(recordId, givenName, originalName)
        }
        CardOrderSetup {
            id: order

            model: root.model.cardOrder
            onRowGlided: row => scroll.bringIntoSight(row)
        }
        IPhoneSetup {
            model: root.model.phones
        }
        AndroidSetup {
            model: root.model.phones
        }
        GeneralSetup {
            id: general

            model: root.model.general
        }
        RemovalSetup {
            isRemoving: root.model.isRemoving
            removedEverything: root.model.removedEverything
            onRemovalAsked: removal.open()
        }
    }
    Timer {
        interval: 300
        objectName: "reveal"
        running: root.model.cardOrder.isRevealed
        onTriggered: {
            if (order.visible)
                scroll.glideTo(order);
            root.model.cardOrder.isRevealed = false;
        }
    }
    Timer {
        interval: 300
        objectName: "revealUpdates"
        running: root.model.general.updates.isRevealed
        onTriggered: {
            if (general.updates.visible)
                scroll.glideIntoSight(general.updates);
            root.model.general.updates.isRevealed = false;
        }
    }
    ConfirmationDialog {
        id: removal

        action: qsTr("모두 해제")
        message: qsTr("Claude Code 상태줄을 원래대로 돌리고 iPhone과 안드로이드로 보낸 값을 지워요.")
        objectName: "removalDialog"
        title: qsTr("모두 해제할까요?")
        onConfirmed: root.model.removeEverything()
    }
    UsageNameEditor {
        id: naming

        onSaved: (recordId, name) => root.model.setUsageName(recordId, name)
    }
    AddAccountFolderView {
        id: adding

        model: root.model.addFolder
    }
    FailureAlert {
        id: alert

        isOpen: root.model.failure !== ""
        message: root.model.failure
        objectName: "failure"
        onDismissed: root.model.clearFailure()
    }
}
