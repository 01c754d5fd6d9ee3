import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."
import "../functions.js" as Fn

StepPage {
    id: page
    objectName: "step4"
    property var userSetValues: [""]

    function loadUserSets() {
        var names = [qsTr("None")];
        var values = [""];
        try {
            var sets = JSON.parse(qmlModelInterface.getAvailableUserSets())["UserSets"] || [];
            for (var i = 0; i < sets.length; ++i) {
                // The session names each set as {"userset", "DisplayName"}; a
                // one-key object {shown: used} is read as well.
                var set = sets[i];
                if (set.userset !== undefined) {
                    names.push(set.DisplayName ? String(set.DisplayName) : String(set.userset));
                    values.push(String(set.userset));
                } else {
                    var key = Object.keys(set)[0];
                    names.push(key);
                    values.push(String(set[key]));
                }
            }
        } catch (e) {
        }
        userSetValues = values;
        userSetChoice.model = names;
    }

    image: Item {
        anchors.fill: parent
        // The original image on the left of the divider, the camera as it is now on the right.
        LiveImage {
            id: after
            anchors.fill: parent
            showPatches: false
            grabContinuously: (wizard !== null && wizard.autoRefreshChecked) && (wizard !== null && wizard.controlsEnabled)
        }
        Item {
            x: after.frameItem.x
            y: after.frameItem.y
            width: after.frameItem.width * compare.value
            height: after.frameItem.height
            clip: true
            Image {
                objectName: "beforeImage"
                width: after.frameItem.width
                height: after.frameItem.height
                source: qmlModelInterface.originalImageUrl
                cache: false
                fillMode: Image.Stretch
            }
            Rectangle {
                anchors.right: parent.right
                width: 2
                height: parent.height
                color: "white"
            }
        }
        Label {
            x: after.frameItem.x + 8
            y: after.frameItem.y + 8
            text: qsTr("Before Calibration")
            Accessible.name: text
            color: "white"
            style: Text.Outline
            styleColor: "#80000000"
        }
        Label {
            x: after.frameItem.x + after.frameItem.width - width - 8
            y: after.frameItem.y + 8
            text: qsTr("After Calibration")
            Accessible.name: text
            color: "white"
            style: Text.Outline
            styleColor: "#80000000"
        }
        Slider {
            id: compare
            objectName: "compareSlider"
            y: after.frameItem.y + after.frameItem.height + 4
            x: after.frameItem.x
            width: after.frameItem.width
            from: 0; to: 1; value: 0.5
            stepSize: 0.05
            Accessible.name: qsTr("Before Calibration") + " / " + qsTr("After Calibration")
        }
    }

    SaveOption {
        id: settingsOption
        objectName: "saveSettings"
        Layout.fillWidth: true
        text: qsTr("Save camera settings to file")
        settingsCategory: "ColCalPlugin/Paths/SaveCalibration"
        enabledOption: (wizard !== null && wizard.controlsEnabled)
        onPathChanged: qmlModelInterface.calibrationFileToSave = path
        onBrowsing: wizard.controlsEnabled = !open
    }
    SaveOption {
        id: summaryOption
        objectName: "saveSummary"
        Layout.fillWidth: true
        text: qsTr("Save calibration summary")
        settingsCategory: "ColCalPlugin/Paths/SummaryReport"
        enabledOption: (wizard !== null && wizard.controlsEnabled)
        onPathChanged: qmlModelInterface.summaryFileToSave = path
        onBrowsing: wizard.controlsEnabled = !open
    }

    Label {
        text: qsTr("Save camera settings in user set")
        Accessible.name: text
        color: Theme.text
    }
    ComboBox {
        id: userSetChoice
        objectName: "userSetChoice"
        Layout.fillWidth: true
        Accessible.name: currentText
        enabled: (wizard !== null && wizard.controlsEnabled)
        delegate: ItemDelegate {
            width: userSetChoice.width
            text: modelData
            Accessible.name: text
            highlighted: userSetChoice.highlightedIndex === index
        }
    }
    CheckBox {
        id: asDefault
        objectName: "saveAsDefaultCheck"
        text: qsTr("Save settings as default")
        Accessible.name: text
        enabled: (wizard !== null && wizard.controlsEnabled) && userSetChoice.currentIndex > 0
    }

    Button {
        objectName: "saveButton"
        Layout.fillWidth: true
        text: qsTr("Save")
        Accessible.name: text
        highlighted: true
        enabled: (wizard !== null && wizard.controlsEnabled)
        onClicked: {
            wizard.controlsEnabled = false;
            var error = Fn.save(wizard, page.userSetValues[userSetChoice.currentIndex] || "", asDefault.checked);
            wizard.controlsEnabled = true;
            status.saved = error === "";
            if (error !== "")
                wizard.showBox(qsTr("Color Calibrator"), error, "critical", null);
        }
    }
    Label {
        id: status
        objectName: "saveStatus"
        property bool saved: false
        Layout.fillWidth: true
        visible: saved
        wrapMode: Text.Wrap
        text: qsTr("The calibration results have been saved.")
        Accessible.name: text
        color: Theme.good
    }

    ShotControls { wizard: page.wizard; Layout.fillWidth: true }
    Item { Layout.fillHeight: true }

    Component.onCompleted: {
        loadUserSets();
        qmlModelInterface.grabOriginalImage();
    }
}
