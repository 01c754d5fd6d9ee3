import QtQuick 2.15
import QtQuick.Controls 2.15
import QtMultimedia 5.15
import "."

// The camera image at its own aspect ratio with the chart grid over it. The
// frame's top-left corner is the origin of the view coordinates that the grid
// items use, so the transformer only needs the scale.
Item {
    id: root
    property bool live: true
    property url imageSource: ""
    property bool showPatches: true
    property bool showOutline: false
    property bool editable: false
    property bool hoverColors: false
    property bool grabContinuously: false
    // Bumped whenever corner positions must be read again (the transformer
    // changed, or the chart finder moved the outline from its own thread).
    property int revision: 0

    signal hovered(color patchColor, string text)
    signal outlineEdited()

    readonly property real aspect: camera.originalSize.width > 0 && camera.originalSize.height > 0
                                   ? camera.originalSize.width / camera.originalSize.height : 4 / 3
    readonly property alias frameItem: frame

    function refresh() {
        revision++;
        patches.requestPaint();
    }

    function moveOutline(dx, dy) {
        gridOutline.upperLeft = Qt.point(gridOutline.upperLeft.x + dx, gridOutline.upperLeft.y + dy);
        gridOutline.upperRight = Qt.point(gridOutline.upperRight.x + dx, gridOutline.upperRight.y + dy);
        gridOutline.lowerRight = Qt.point(gridOutline.lowerRight.x + dx, gridOutline.lowerRight.y + dy);
        gridOutline.lowerLeft = Qt.point(gridOutline.lowerLeft.x + dx, gridOutline.lowerLeft.y + dy);
    }

    function commitOutline() {
        qmlModelInterface.updateTrapezoidList();
        outlineEdited();
    }

    function updateScale() {
        if (frame.width > 0 && camera.originalSize.width > 0) {
            transformer.offset = Qt.point(0, 0);
            transformer.scale = camera.originalSize.width / frame.width;
        }
        refresh();
    }

    Rectangle {
        id: frame
        objectName: "imageFrame"
        anchors.centerIn: parent
        width: Math.floor(Math.min(root.width, root.height * root.aspect))
        height: Math.floor(width / root.aspect)
        color: "#20262b"
        radius: 2
        clip: true
        activeFocusOnTab: root.editable
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("Camera image")
        Accessible.description: root.editable ? qsTr("Arrow keys move the grid") : ""

        onWidthChanged: { root.updateScale(); resizeTimer.restart(); }
        onHeightChanged: resizeTimer.restart()

        VideoOutput {
            anchors.fill: parent
            visible: root.live
            source: root.live ? camera : null
            fillMode: VideoOutput.Stretch
        }
        Image {
            anchors.fill: parent
            visible: !root.live
            source: root.live ? "" : root.imageSource
            fillMode: Image.Stretch
            cache: false
            asynchronous: true
        }

        Canvas {
            id: patches
            anchors.fill: parent
            visible: qmlModelInterface.showGrid
            onPaint: {
                var ctx = getContext("2d");
                ctx.reset();
                root.revision;
                if (root.showPatches) {
                    ctx.lineWidth = 1.5;
                    ctx.strokeStyle = Theme.patchLine;
                    var list = grid.list;
                    for (var i = 0; i < list.length; ++i) {
                        var t = list[i];
                        ctx.beginPath();
                        ctx.moveTo(t.upperLeft.x, t.upperLeft.y);
                        ctx.lineTo(t.upperRight.x, t.upperRight.y);
                        ctx.lineTo(t.lowerRight.x, t.lowerRight.y);
                        ctx.lineTo(t.lowerLeft.x, t.lowerLeft.y);
                        ctx.closePath();
                        ctx.stroke();
                    }
                }
                if (root.showOutline) {
                    ctx.lineWidth = 2;
                    ctx.strokeStyle = frame.activeFocus ? Theme.accentLight : Theme.gridLine;
                    ctx.beginPath();
                    ctx.moveTo(gridOutline.upperLeft.x, gridOutline.upperLeft.y);
                    ctx.lineTo(gridOutline.upperRight.x, gridOutline.upperRight.y);
                    ctx.lineTo(gridOutline.lowerRight.x, gridOutline.lowerRight.y);
                    ctx.lineTo(gridOutline.lowerLeft.x, gridOutline.lowerLeft.y);
                    ctx.closePath();
                    ctx.stroke();
                }
            }
            Connections {
                target: grid
                function onListChanged() { patches.requestPaint(); }
            }
            Connections {
                target: gridOutline
                function onUpperLeftChanged() { patches.requestPaint(); }
                function onUpperRightChanged() { patches.requestPaint(); }
                function onLowerRightChanged() { patches.requestPaint(); }
                function onLowerLeftChanged() { patches.requestPaint(); }
            }
        }

        // Dragging inside the frame moves the whole outline.
        MouseArea {
            id: dragArea
            anchors.fill: parent
            enabled: root.editable && qmlModelInterface.showGrid
            property point last
            onPressed: { last = Qt.point(mouse.x, mouse.y); frame.forceActiveFocus(); }
            onPositionChanged: {
                root.moveOutline(Math.round(mouse.x - last.x), Math.round(mouse.y - last.y));
                last = Qt.point(mouse.x, mouse.y);
            }
            onReleased: root.commitOutline()
        }

        MouseArea {
            anchors.fill: parent
            enabled: root.hoverColors
            hoverEnabled: true
            acceptedButtons: Qt.NoButton
            onPositionChanged: {
                var c = grid.colorAtPoint(Math.round(mouse.x), Math.round(mouse.y));
                root.hovered(c, grid.textOfColor(c));
            }
        }

        Repeater {
            model: root.showOutline && root.editable && qmlModelInterface.showGrid
                   ? ["upperLeft", "upperRight", "lowerRight", "lowerLeft"] : []
            delegate: Rectangle {
                id: handle
                objectName: "handle_" + modelData
                readonly property point corner: { root.revision; return gridOutline[modelData]; }
                width: 14; height: 14; radius: 7
                x: corner.x - width / 2
                y: corner.y - height / 2
                color: handleArea.pressed ? Theme.accent : Theme.gridLine
                border.color: "#3a3000"
                MouseArea {
                    id: handleArea
                    anchors.fill: parent
                    anchors.margins: -6
                    preventStealing: true
                    onPositionChanged: {
                        var p = mapToItem(frame, mouse.x, mouse.y);
                        gridOutline[modelData] = Qt.point(Math.round(Math.max(0, Math.min(frame.width, p.x))),
                                                          Math.round(Math.max(0, Math.min(frame.height, p.y))));
                    }
                    onReleased: root.commitOutline()
                }
            }
        }

        Keys.onPressed: {
            if (!root.editable)
                return;
            var step = (event.modifiers & Qt.ShiftModifier) ? 10 : 2;
            var dx = 0, dy = 0;
            if (event.key === Qt.Key_Left) dx = -step;
            else if (event.key === Qt.Key_Right) dx = step;
            else if (event.key === Qt.Key_Up) dy = -step;
            else if (event.key === Qt.Key_Down) dy = step;
            else return;
            root.moveOutline(dx, dy);
            root.commitOutline();
            event.accepted = true;
        }
        onActiveFocusChanged: patches.requestPaint()
    }

    // The grabber scales frames to the displayed size; tell it once the layout settles.
    Timer {
        id: resizeTimer
        interval: 100
        onTriggered: {
            if (!root.live || frame.width <= 0 || frame.height <= 0)
                return;
            var size = Qt.size(frame.width, frame.height);
            if (camera.size.width === size.width && camera.size.height === size.height)
                return;
            camera.size = size;
            if (!root.grabContinuously)
                camera.singleGrab();
        }
    }

    Connections {
        target: camera
        function onOriginalSizeChanged() { root.updateScale(); }
    }
    Connections {
        target: qmlModelInterface
        function onShowGridChanged() { patches.requestPaint(); }
    }
    Component.onCompleted: updateScale()
}
