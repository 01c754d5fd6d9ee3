import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// Continuous live image or one image on demand. A Flow, so that longer
// translations put the button under the check box instead of past the panel.
Flow {
    property Item wizard
    spacing: Theme.spacing
    CheckBox {
        objectName: "continuousShotCheck"
        text: qsTr("Continuous Shot")
        Accessible.name: text
        checked: (wizard !== null && wizard.autoRefreshChecked)
        enabled: (wizard !== null && wizard.controlsEnabled)
        onToggled: wizard.autoRefreshChecked = checked
    }
    Button {
        objectName: "singleShotButton"
        text: qsTr("Single Shot")
        Accessible.name: text
        enabled: qmlModelInterface.singleShotEnabled
        onClicked: camera.singleGrab()
    }
}
