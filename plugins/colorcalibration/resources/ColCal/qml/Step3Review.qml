import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."
import "../functions.js" as Fn

Item {
    id: page
    objectName: "step3"
    property Item wizard
    property color hoverColor: "transparent"
    property string hoverText: ""
    readonly property var titles: Fn.reportTitles()

    function showReport() {
        var table = Fn.reportTable(qmlModelInterface.calibrationsResultsJson, reportChoice.currentIndex);
        report.columns = table.columns;
        report.rows = table.rows;
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.spacing

        RowLayout {
            Layout.fillWidth: true
            Layout.fillHeight: false
            Layout.preferredHeight: Math.max(220, page.height * 0.5)
            spacing: Theme.spacing

            LiveImage {
                id: live
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 400
                hoverColors: true
                grabContinuously: (wizard !== null && wizard.autoRefreshChecked) && (wizard !== null && wizard.controlsEnabled)
                onHovered: { page.hoverColor = patchColor; page.hoverText = text; }
            }

            ColumnLayout {
                Layout.fillWidth: false
                Layout.preferredWidth: 280
                Layout.fillHeight: true
                spacing: 8
                Label {
                    Layout.fillWidth: true
                    wrapMode: Text.Wrap
                    text: qsTr("Point at a patch to compare its colors.")
                    Accessible.name: text
                    color: Theme.mutedText
                }
                Repeater {
                    model: [
                        { name: qsTr("1 - Target Value"), which: 0 },
                        { name: qsTr("2 - Original Value"), which: 1 },
                        { name: qsTr("3 - Current Value"), which: 2 }
                    ]
                    delegate: RowLayout {
                        readonly property int patch: grid.selectedPatch
                        readonly property color swatchColor: {
                            if (patch < 0)
                                return "transparent";
                            if (modelData.which === 0) return grid.targetColorAt(patch);
                            if (modelData.which === 1) return grid.originalColorAt(patch);
                            return grid.calibratedColorAt(patch);
                        }
                        spacing: 8
                        Rectangle {
                            width: 28; height: 20; radius: 3
                            color: parent.swatchColor
                            border.color: Theme.border
                        }
                        Label {
                            text: modelData.name
                            Accessible.name: text
                            color: Theme.text
                        }
                    }
                }
                Label {
                    objectName: "hoverText"
                    Layout.fillWidth: true
                    visible: page.hoverText !== "" && grid.selectedPatch >= 0
                    text: page.hoverText
                    Accessible.name: text
                    wrapMode: Text.Wrap
                    font.bold: true
                    color: Theme.text
                }
                Button {
                    objectName: "recalibrateButton"
                    Layout.fillWidth: true
                    visible: qmlModelInterface.useAutoCalibration
                    text: qsTr("Recalibrate Camera")
                    Accessible.name: text
                    enabled: (wizard !== null && wizard.controlsEnabled)
                    onClicked: {
                        wizard.controlsEnabled = false;
                        Fn.recalibrate(wizard);
                        wizard.controlsEnabled = true;
                    }
                }
                ShotControls { wizard: page.wizard; Layout.fillWidth: true }
                Item { Layout.fillHeight: true }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spacing
            Label {
                text: qsTr("Calibration Reports")
                Accessible.name: text
                font.bold: true
                color: Theme.text
            }
            ComboBox {
                id: reportChoice
                objectName: "reportChoice"
                Layout.fillWidth: true
                model: page.titles
                Accessible.name: currentText
                enabled: (wizard !== null && wizard.controlsEnabled)
                onCurrentIndexChanged: page.showReport()
                delegate: ItemDelegate {
                    width: reportChoice.width
                    text: modelData
                    Accessible.name: text
                    highlighted: reportChoice.highlightedIndex === index
                }
            }
        }

        ReportTable {
            id: report
            objectName: "reportTable"
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: Fn.reportKeys[reportChoice.currentIndex] !== "LUT"
        }
        Label {
            objectName: "lutNotice"
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: !report.visible
            verticalAlignment: Text.AlignTop
            wrapMode: Text.Wrap
            text: qsTr("To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.")
            Accessible.name: text
            color: Theme.text
        }
    }

    Connections {
        target: qmlModelInterface
        function onCalibrationsResultsJsonChanged() { page.showReport(); }
        function onCalibrationFinished() { page.showReport(); }
    }
    Component.onCompleted: showReport()
}
