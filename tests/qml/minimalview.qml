import QtQuick 2.15
import QtMultimedia 5.15

// The live image with the chart grid over it and nothing else: stands in for
// the wizard so that the facade and its objects are tested on their own.
Rectangle {
    id: root
    width: 640
    height: 400
    color: "#202020"

    function fitTransformer() {
        if (camera.originalSize.width > 0 && width > 0)
            transformer.scale = camera.originalSize.width / width
    }

    VideoOutput {
        id: video
        anchors.fill: parent
        source: camera
        fillMode: VideoOutput.Stretch
    }

    Canvas {
        id: overlay
        anchors.fill: parent
        visible: qmlModelInterface.showGrid

        function outline(ctx, t) {
            ctx.beginPath()
            ctx.moveTo(t.upperLeft.x, t.upperLeft.y)
            ctx.lineTo(t.upperRight.x, t.upperRight.y)
            ctx.lineTo(t.lowerRight.x, t.lowerRight.y)
            ctx.lineTo(t.lowerLeft.x, t.lowerLeft.y)
            ctx.closePath()
            ctx.stroke()
        }

        onPaint: {
            var ctx = getContext("2d")
            ctx.reset()
            ctx.lineWidth = 2
            ctx.strokeStyle = "#ffd400"
            outline(ctx, gridOutline)
            ctx.lineWidth = 1
            ctx.strokeStyle = "#00e0ff"
            for (var i = 0; i < grid.list.length; ++i)
                outline(ctx, grid.list[i])
        }
    }

    Connections {
        target: grid
        function onListChanged() { overlay.requestPaint() }
    }
    Connections {
        target: camera
        function onOriginalSizeChanged() { root.fitTransformer(); qmlModelInterface.updateTrapezoidList() }
    }

    onWidthChanged: { camera.size = Qt.size(width, height); fitTransformer() }
    onHeightChanged: camera.size = Qt.size(width, height)
    Component.onCompleted: {
        camera.size = Qt.size(width, height)
        fitTransformer()
        camera.startGrab()
    }
}
