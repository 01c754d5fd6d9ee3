import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."
import "../functions.js" as Fn

StepPage {
    id: page
    objectName: "step2"
    // New exposure or gain settings whose image has not been shown yet.
    property bool imagesPending: false

    image: LiveImage {
        anchors.fill: parent
        showPatches: true
        grabContinuously: (wizard !== null && wizard.autoRefreshChecked) && (wizard !== null && wizard.controlsEnabled)
    }

    Label {
        Layout.fillWidth: true
        wrapMode: Text.Wrap
        text: qsTr("Set the exposure time and the gain so that the gray patch is just right, or click Auto.")
        Accessible.name: text
        color: Theme.text
    }

    BrightnessGauge {
        id: gauge
        Layout.alignment: Qt.AlignHCenter
        onNeedleMoved: Fn.updateBrightnessFlags(wizard, rate)
    }

    Label {
        text: qsTr("Exposure Time")
        Accessible.name: text
        font.bold: true
        color: Theme.text
    }
    RowLayout {
        Layout.fillWidth: true
        Slider {
            id: exposureSlider
            objectName: "exposureSlider"
            Layout.fillWidth: true
            from: exposureTime.min
            to: exposureTime.max
            value: exposureTime.value
            stepSize: 0.01
            enabled: (wizard !== null && wizard.controlsEnabled)
            Accessible.name: qsTr("Exposure Time")
            onMoved: { exposureTime.setValue(value); page.imagesPending = true; }
        }
        Label {
            objectName: "exposureValue"
            Layout.preferredWidth: 90
            horizontalAlignment: Text.AlignRight
            text: exposureTime.value > 0 ? Math.round(Math.pow(10, exposureTime.value)) + " µs" : ""
            Accessible.name: text
            color: Theme.mutedText
        }
    }

    Label {
        text: qsTr("Gain")
        Accessible.name: text
        font.bold: true
        color: Theme.text
    }
    RowLayout {
        Layout.fillWidth: true
        Slider {
            id: gainSlider
            objectName: "gainSlider"
            Layout.fillWidth: true
            from: 0
            to: 1
            value: Math.max(0, gainValue.value)
            stepSize: 0.01
            enabled: (wizard !== null && wizard.controlsEnabled)
            Accessible.name: qsTr("Gain")
            onMoved: { gainValue.setValue(value); page.imagesPending = true; }
        }
        Label {
            objectName: "gainValueText"
            Layout.preferredWidth: 90
            horizontalAlignment: Text.AlignRight
            text: gainValue.value >= 0 ? (gainValue.value * (gainValue.max - gainValue.min) + gainValue.min).toFixed(2) : ""
            Accessible.name: text
            color: Theme.mutedText
        }
    }

    Button {
        objectName: "autoButton"
        Layout.fillWidth: true
        text: qsTr("Auto")
        Accessible.name: text
        highlighted: true
        enabled: (wizard !== null && wizard.controlsEnabled)
        onClicked: Fn.autoAdjust(wizard)
    }

    ShotControls { wizard: page.wizard; Layout.fillWidth: true }

    Item { Layout.fillHeight: true }

    Connections {
        target: exposureTime
        function onSignalValueChanged() { page.imagesPending = true; }
    }
    Connections {
        target: gainValue
        function onSignalValueChanged() { page.imagesPending = true; }
    }
    Connections {
        target: qmlModelInterface
        function onAutoAdjustGray80PercentPatchFinished() { wizard.controlsEnabled = true; }
        function onCleanupQML() { checkTimer.stop(); }
    }

    Timer {
        id: checkTimer
        objectName: "step2Timer"
        interval: 500
        repeat: true
        running: true
        onTriggered: {
            if (page.imagesPending && (!(wizard !== null && wizard.controlsEnabled) || !(wizard !== null && wizard.autoRefreshChecked))) {
                page.imagesPending = false;
                camera.singleGrab();
            }
        }
    }
}
