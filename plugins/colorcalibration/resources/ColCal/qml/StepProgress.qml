import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// The four steps as a bar: every step up to the active one dark, the rest light.
RowLayout {
    id: progress
    property int activeStep: 1
    property var titles: []
    spacing: 4

    Repeater {
        model: progress.titles
        delegate: ColumnLayout {
            readonly property bool reached: index + 1 <= progress.activeStep
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            spacing: 4
            Rectangle {
                objectName: "progressSegment" + (index + 1)
                Layout.fillWidth: true
                height: 6
                radius: 3
                color: reached ? Theme.stepDone : Theme.stepTodo
            }
            Label {
                objectName: "progressTitle" + (index + 1)
                Layout.fillWidth: true
                text: (index + 1) + "  " + modelData
                Accessible.name: text
                elide: Text.ElideRight
                font.pixelSize: Theme.fontSize - 1
                font.bold: index + 1 === progress.activeStep
                color: reached ? Theme.text : Theme.mutedText
            }
        }
    }
}
