import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// One section of the results: a header row and one row per entry. Rows are
// chosen with the arrow keys; each reads out as its title and cells.
Rectangle {
    id: table
    property var columns: []
    property var rows: []
    readonly property real titleWidth: 84
    readonly property real cellWidth: columns.length > 0
                                      ? Math.max(60, (width - titleWidth - 16) / columns.length) : 0
    color: Theme.surface
    border.color: Theme.border
    radius: Theme.radius

    Row {
        id: header
        x: 8; y: 6
        Item { width: table.titleWidth; height: 1 }
        Repeater {
            model: table.columns
            Label {
                width: table.cellWidth
                text: modelData
                Accessible.name: text
                font.bold: true
                font.pixelSize: Theme.fontSize - 1
                elide: Text.ElideRight
                color: Theme.mutedText
            }
        }
    }

    ListView {
        id: list
        objectName: "reportRows"
        anchors.fill: parent
        anchors.topMargin: header.height + 10
        anchors.margins: 4
        clip: true
        model: table.rows
        activeFocusOnTab: true
        keyNavigationEnabled: true
        highlightMoveDuration: 0
        currentIndex: 0
        ScrollBar.vertical: ScrollBar {}
        Accessible.role: Accessible.Table
        Accessible.name: qsTr("Calibration Reports")
        highlight: Rectangle {
            color: list.activeFocus ? Theme.accentLight : "transparent"
            radius: 3
        }
        delegate: Item {
            width: list.width
            height: 22
            Accessible.role: Accessible.Row
            Accessible.name: modelData.title + ": " + modelData.cells.join(", ")
            Row {
                x: 4
                anchors.verticalCenter: parent.verticalCenter
                Label {
                    width: table.titleWidth
                    text: modelData.title
                    Accessible.name: text
                    font.pixelSize: Theme.fontSize - 1
                    font.bold: true
                    color: Theme.text
                }
                Repeater {
                    model: modelData.cells
                    Label {
                        width: table.cellWidth
                        text: modelData
                        Accessible.name: text
                        font.pixelSize: Theme.fontSize - 1
                        elide: Text.ElideRight
                        color: Theme.text
                    }
                }
            }
        }
    }
}
