import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Qt.labs.settings 1.0
import com.ostrel.filedialog 1.0
import "."

// A save option that needs a folder: a check box, the folder as text and a
// picker that starts in the folder used last time.
ColumnLayout {
    id: option
    property alias text: check.text
    property string settingsCategory
    property bool enabledOption: true
    readonly property string path: check.checked ? folderField.text.trim() : ""
    property alias checkBox: check
    property alias field: folderField
    signal browsing(bool open)
    spacing: 4

    CheckBox {
        id: check
        objectName: option.objectName + "Check"
        Accessible.name: text
        enabled: option.enabledOption
        onToggled: if (checked && folderField.text === "") folderField.text = paths.folderPath()
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.leftMargin: 28
        enabled: check.checked && option.enabledOption
        TextField {
            id: folderField
            objectName: option.objectName + "Folder"
            Layout.fillWidth: true
            placeholderText: qsTr("Folder")
            Accessible.name: text !== "" ? text : placeholderText
            selectByMouse: true
        }
        Button {
            objectName: option.objectName + "Browse"
            text: qsTr("Browse...")
            Accessible.name: text
            onClicked: {
                dialog.folder = paths.folder;
                // The file dialog runs its own event loop; nothing here may move meanwhile.
                option.browsing(true);
                dialog.open();
                option.browsing(false);
            }
        }
    }

    QMLFileDialog {
        id: dialog
        title: option.text
        selectFolder: true
        onAccepted: {
            var local = decodeURIComponent(String(fileUrl).replace(/^file:\/\//, ""));
            folderField.text = local;
            paths.folder = String(fileUrl);
        }
    }
    Settings {
        id: paths
        category: option.settingsCategory
        property string folder: qmlModelInterface.kaltoStandardLocation
        function folderPath() {
            return decodeURIComponent(String(folder).replace(/^file:\/\/\/?/, "/").replace(/^\/\//, "/"));
        }
    }
}
