import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."
import "../functions.js" as Fn

// The wizard's message box: application-modal, one text, OK or Yes/No.
// Return presses the focused button, Escape answers "No" (or closes).
Dialog {
    id: box
    objectName: "messageBox"
    property string text
    property string kind: "information"   // information, warning, critical, question
    readonly property bool question: kind === "question"

    title: qsTr("Color Calibrator")
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    anchors.centerIn: Overlay.overlay
    width: Math.min(520, parent ? parent.width - 40 : 520)

    header: Label {
        objectName: "messageBoxTitle"
        text: box.title
        Accessible.name: text
        font.bold: true
        font.pixelSize: Theme.fontSize + 2
        padding: 16
        bottomPadding: 4
        color: box.kind === "critical" ? Theme.bad : box.kind === "warning" ? Theme.warn : Theme.text
    }

    contentItem: Label {
        objectName: "messageBoxText"
        text: box.text
        textFormat: Text.StyledText
        wrapMode: Text.Wrap
        color: Theme.text
        font.pixelSize: Theme.fontSize
        Accessible.name: Fn.plainText(box.text)
    }

    footer: DialogButtonBox {
        id: buttons
        alignment: Qt.AlignRight
        Button {
            id: yesButton
            objectName: box.question ? "messageBoxYes" : "messageBoxOk"
            text: box.question ? qsTr("Yes") : qsTr("OK")
            Accessible.name: text
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
            Keys.onReturnPressed: box.accept()
            Keys.onEnterPressed: box.accept()
        }
        Button {
            id: noButton
            objectName: "messageBoxNo"
            visible: box.question
            text: qsTr("No")
            Accessible.name: text
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
            Keys.onReturnPressed: box.reject()
            Keys.onEnterPressed: box.reject()
        }
    }

    // Asking to throw work away defaults to the safe answer.
    onOpened: (question ? noButton : yesButton).forceActiveFocus()
}
