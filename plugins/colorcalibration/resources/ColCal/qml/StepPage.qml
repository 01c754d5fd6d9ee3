import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// A step's screen: the image on the left, the step's controls in a side
// panel on the right. Narrow windows put the panel under the image.
Item {
    id: page
    property Item wizard
    default property alias panel: panelColumn.data
    property alias image: imageSlot.data
    readonly property bool narrow: width < 760

    GridLayout {
        anchors.fill: parent
        columns: page.narrow ? 1 : 2
        columnSpacing: Theme.spacing
        rowSpacing: Theme.spacing

        Item {
            id: imageSlot
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 200
        }

        ScrollView {
            id: scroller
            Layout.preferredWidth: page.narrow ? page.width : Math.max(280, Math.min(420, page.width * 0.32))
            Layout.fillHeight: !page.narrow
            Layout.preferredHeight: page.narrow ? Math.min(panelColumn.implicitHeight, page.height * 0.5) : -1
            contentWidth: availableWidth
            clip: true
            ColumnLayout {
                id: panelColumn
                width: scroller.availableWidth
                spacing: Theme.spacing
            }
        }
    }
}
