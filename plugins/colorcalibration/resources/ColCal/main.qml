import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import QtQuick.Window 2.15
import "qml"
import "functions.js" as Fn

// The four-step calibration wizard.
Page {
    id: root
    objectName: "wizard"

    property int activeStep: 1
    property bool autoRefreshChecked: true
    property bool bImageToDark: false
    property bool bImageToBright: false
    property string errorText: ""
    property string warningText: ""
    property string criticalText: ""
    // False while a long operation runs: the page, the navigation and the
    // single-shot button wait for it.
    property bool controlsEnabled: true
    readonly property bool messageOpen: messageBox.opened || messageBox.visible
    readonly property var stepTitles: [qsTr("Position Grid"), qsTr("Adjust Brightness"),
                                       qsTr("Review Calibration Results"), qsTr("Save Calibration Results")]
    property var pendingMessages: []
    property var afterMessages: null
    // Set once the dialog has ended; nothing may restart the camera then.
    property bool closed: false
    // Set by Finish: the camera keeps its new settings.
    property bool finishing: false

    function focusWithin() {
        for (var item = Window.activeFocusItem; item; item = item.parent)
            if (item === root)
                return true;
        return false;
    }

    function goToStep(step) {
        activeStep = Math.max(Fn.firstStep, Math.min(Fn.lastStep, step));
        qmlModelInterface.activeStep = activeStep;
        if (autoRefreshChecked && controlsEnabled)
            camera.startGrab();
        else
            camera.singleGrab();
        root.forceActiveFocus();
    }

    // Message boxes are shown one after the other; `then` runs once all are answered.
    function showBox(title, text, kind, onAccepted) {
        pendingMessages.push({ title: title, text: text, kind: kind, accepted: onAccepted });
        if (!messageBox.visible)
            nextMessage();
    }
    function ask(text, onYes) {
        showBox(qsTr("Color Calibrator"), text, "question", onYes);
    }
    function showCollectedMessages(then) {
        var title = qsTr("Color Calibrator");
        var critical = criticalText;
        afterMessages = critical !== "" ? null : then;
        if (warningText !== "")
            showBox(title, warningText, "warning", null);
        if (errorText !== "")
            showBox(title, errorText, "critical", null);
        if (critical !== "")
            showBox(title, critical, "critical", function() { qmlModelInterface.cancel(); });
        if (!messageBox.visible && pendingMessages.length === 0)
            runAfterMessages();
    }
    function runAfterMessages() {
        var then = afterMessages;
        afterMessages = null;
        if (then)
            then();
    }
    function nextMessage() {
        if (pendingMessages.length === 0) {
            runAfterMessages();
            root.forceActiveFocus();
            return;
        }
        var m = pendingMessages.shift();
        messageBox.title = m.title;
        messageBox.text = m.text;
        messageBox.kind = m.kind;
        messageBox.onYes = m.accepted;
        messageBox.open();
    }

    onControlsEnabledChanged: {
        if (closed)
            return;
        // A control that had the focus may have been disabled meanwhile;
        // keep Return and Escape working.
        if (controlsEnabled && !focusWithin())
            forceActiveFocus();
        qmlModelInterface.singleShotEnabled = controlsEnabled && !autoRefreshChecked;
        if (autoRefreshChecked) {
            if (controlsEnabled)
                camera.startGrab();
            else
                camera.stopGrab();
        }
    }
    onAutoRefreshCheckedChanged: {
        if (closed)
            return;
        qmlModelInterface.singleShotEnabled = controlsEnabled && !autoRefreshChecked;
        if (autoRefreshChecked && controlsEnabled)
            camera.startGrab();
        else
            camera.stopGrab();
    }

    palette.window: Theme.background
    palette.base: Theme.surface
    palette.text: Theme.text
    palette.windowText: Theme.text
    palette.button: "#e9eef2"
    palette.buttonText: Theme.text
    palette.highlight: Theme.accent
    palette.highlightedText: "white"
    palette.mid: Theme.border
    font.pixelSize: Theme.fontSize

    background: Rectangle { color: Theme.background }

    header: Pane {
        padding: Theme.spacing
        background: Rectangle { color: Theme.surface; Rectangle { width: parent.width; height: 1; anchors.bottom: parent.bottom; color: Theme.border } }
        ColumnLayout {
            anchors.fill: parent
            spacing: 8
            Label {
                objectName: "stepTitle"
                text: root.stepTitles[root.activeStep - 1]
                Accessible.name: text
                Accessible.role: Accessible.Heading
                font.pixelSize: Theme.titleSize
                font.bold: true
                color: Theme.text
            }
            StepProgress {
                Layout.fillWidth: true
                activeStep: root.activeStep
                titles: root.stepTitles
            }
        }
    }

    Loader {
        id: pageLoader
        objectName: "pageLoader"
        anchors.fill: parent
        anchors.margins: Theme.spacing
        enabled: root.controlsEnabled
        sourceComponent: [step1, step2, step3, step4][root.activeStep - 1]
    }
    Component { id: step1; Step1Position { wizard: root } }
    Component { id: step2; Step2Brightness { wizard: root } }
    Component { id: step3; Step3Review { wizard: root } }
    Component { id: step4; Step4Save { wizard: root } }

    footer: Pane {
        padding: Theme.spacing
        background: Rectangle { color: Theme.surface; Rectangle { width: parent.width; height: 1; color: Theme.border } }
        RowLayout {
            anchors.fill: parent
            spacing: Theme.spacing
            Button {
                objectName: "cancelButton"
                text: qsTr("Cancel")
                Accessible.name: text
                enabled: root.controlsEnabled
                onClicked: Fn.cancel(root)
            }
            Item { Layout.fillWidth: true }
            Button {
                objectName: "backButton"
                text: qsTr("Back")
                Accessible.name: text
                visible: root.activeStep > Fn.firstStep
                enabled: root.controlsEnabled
                onClicked: Fn.back(root)
            }
            Button {
                objectName: "nextButton"
                text: root.activeStep === Fn.lastStep ? qsTr("Finish") : qsTr("Next")
                Accessible.name: text
                highlighted: true
                enabled: root.controlsEnabled
                onClicked: Fn.forward(root)
            }
        }
    }

    // Return moves on (on step 2 it runs Auto), Escape cancels. Open message
    // boxes take their keys first, and a text field keeps Return for itself.
    readonly property bool keysActive: controlsEnabled && !messageOpen
    Shortcut {
        sequences: ["Return", "Enter"]
        enabled: root.keysActive && !(root.Window.activeFocusItem && root.Window.activeFocusItem.cursorPosition !== undefined)
        onActivated: {
            if (root.activeStep === 2)
                Fn.autoAdjust(root);
            else
                Fn.forward(root);
        }
    }
    Shortcut {
        sequence: "Esc"
        enabled: root.keysActive
        onActivated: Fn.cancel(root)
    }

    MessageBox {
        id: messageBox
        property var onYes: null
        parent: Overlay.overlay
        onAccepted: {
            var f = onYes;
            onYes = null;
            if (f)
                f();
        }
        onClosed: Qt.callLater(root.nextMessage)
    }

    Connections {
        target: qmlModelInterface
        function onCleanupQML() {
            root.closed = true;
            camera.stopGrab();
            // However the window ended (its frame, a removed camera), only
            // Finish may leave the camera with what the wizard changed.
            if (!root.finishing && root.activeStep > Fn.firstStep)
                qmlModelInterface.restoreSettingsBackup();
            root.autoRefreshChecked = true;
        }
    }

    focus: true
    Component.onCompleted: {
        qmlModelInterface.activeStep = activeStep;
        qmlModelInterface.singleShotEnabled = controlsEnabled && !autoRefreshChecked;
        if (autoRefreshChecked)
            camera.startGrab();
        forceActiveFocus();
    }
}
