import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Qt.labs.settings 1.0
import com.ostrel.filedialog 1.0
import "."

StepPage {
    id: page
    objectName: "step1"
    property bool busy: false
    // Where Ctrl+Z takes the outline back to: its place when the step opened
    // or after the last automatic positioning.
    property var savedOutline: null

    function rememberOutline() {
        savedOutline = [gridOutline.upperLeft, gridOutline.upperRight, gridOutline.lowerRight, gridOutline.lowerLeft];
    }
    function restoreOutline() {
        if (!savedOutline)
            return;
        gridOutline.upperLeft = savedOutline[0];
        gridOutline.upperRight = savedOutline[1];
        gridOutline.lowerRight = savedOutline[2];
        gridOutline.lowerLeft = savedOutline[3];
        qmlModelInterface.updateTrapezoidList();
        live.refresh();
    }

    image: LiveImage {
        id: live
        anchors.fill: parent
        showOutline: true
        editable: (wizard !== null && wizard.controlsEnabled)
        grabContinuously: (wizard !== null && wizard.autoRefreshChecked) && (wizard !== null && wizard.controlsEnabled)
    }

    Label {
        objectName: "explanation"
        Layout.fillWidth: true
        wrapMode: Text.Wrap
        textFormat: Text.StyledText
        text: qsTr("To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.<br>Click <b>Next</b> to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.")
        Accessible.name: text.replace(/<br>/g, " ").replace(/<[^>]*>/g, "")
        color: Theme.text
    }

    Button {
        objectName: "autoPositionButton"
        Layout.fillWidth: true
        text: qsTr("Auto-position Grid")
        Accessible.name: text
        enabled: (wizard !== null && wizard.controlsEnabled)
        highlighted: true
        onClicked: {
            wizard.controlsEnabled = false;
            qmlModelInterface.findChartAsync();
        }
    }

    Button {
        objectName: "loadSettingsButton"
        Layout.fillWidth: true
        text: qsTr("Load camera settings")
        Accessible.name: text
        enabled: (wizard !== null && wizard.controlsEnabled)
        onClicked: {
            fileDialog.folder = previousPaths.folder;
            // The file dialog runs its own event loop; nothing here may move meanwhile.
            wizard.controlsEnabled = false;
            fileDialog.open();
            wizard.controlsEnabled = true;
        }
    }
    Label {
        objectName: "previousCalibrationFile"
        Layout.fillWidth: true
        visible: qmlModelInterface.previousCalibrationFile !== ""
        text: qmlModelInterface.previousCalibrationFile
        Accessible.name: text
        elide: Text.ElideMiddle
        color: Theme.mutedText
    }

    CheckBox {
        objectName: "showGridCheck"
        text: qsTr("Show Grid")
        Accessible.name: text
        checked: qmlModelInterface.showGrid
        enabled: (wizard !== null && wizard.controlsEnabled)
        onToggled: qmlModelInterface.showGrid = checked
    }

    ShotControls { wizard: page.wizard; Layout.fillWidth: true }

    Item { Layout.fillHeight: true }

    QMLFileDialog {
        id: fileDialog
        title: qsTr("Load camera settings")
        nameFilters: [qsTr("KaltoFeatureStream files (*.pfs )")]
        onAccepted: {
            var path = String(fileUrl).replace(/^file:\/\//, "");
            qmlModelInterface.previousCalibrationFile = decodeURIComponent(path);
            previousPaths.folder = String(fileUrl).substring(0, String(fileUrl).lastIndexOf("/"));
        }
    }

    Settings {
        id: previousPaths
        category: "ColCalPlugin/Paths/PreviousCalibration"
        property string folder: qmlModelInterface.kaltoStandardLocation
    }

    Connections {
        target: qmlModelInterface
        function onAutoChartFindFinished(valid) {
            live.refresh();
            if (valid)
                page.rememberOutline();
            else
                wizard.showBox(qsTr("Color Calibrator"), qsTr("Grid could not be positioned automatically."), "warning", null);
            wizard.controlsEnabled = true;
        }
    }
    Connections {
        target: gridOutline
        function onResetOutline() { page.restoreOutline(); }
    }

    Shortcut {
        sequence: "Ctrl+Z"
        enabled: (wizard !== null && wizard.controlsEnabled) && !wizard.messageOpen
        onActivated: gridOutline.resetOutline()
    }

    Component.onCompleted: {
        qmlModelInterface.getGridPosition();
        qmlModelInterface.updateTrapezoidList();
        rememberOutline();
        live.refresh();
    }
}
