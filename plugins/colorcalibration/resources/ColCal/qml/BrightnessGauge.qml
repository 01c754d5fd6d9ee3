import QtQuick 2.15
import QtQuick.Controls 2.15
import "."
import "../functions.js" as Fn

// Hit rate of the 80 % grey patch as a half-round dial: upright is on target,
// clockwise too bright. The dial is dark / green / bright from left to right.
Item {
    id: gauge
    objectName: "gauge"
    property real rate: qmlModelInterface.gray80PercentHitRate
    readonly property bool showsValue: Fn.showsNeedle(rate)
    readonly property real needleAngle: Fn.needleAngle(rate)
    readonly property string verdict: Fn.verdict(rate)
    signal needleMoved(real rate)

    implicitWidth: 240
    implicitHeight: 170
    Accessible.role: Accessible.Indicator
    Accessible.name: showsValue ? verdict : ""

    onNeedleAngleChanged: needleMoved(rate)

    Canvas {
        id: dial
        width: Math.min(parent.width, 240)
        height: width * 0.55
        anchors.horizontalCenter: parent.horizontalCenter
        onPaint: {
            var ctx = getContext("2d");
            ctx.reset();
            var cx = width / 2, cy = height - 4, r = Math.min(width / 2, height) - 10;
            // Just right covers +-20 % of the rate, i.e. +-40 degrees of the dial.
            var justRight = 20 / 100 * 200 * Math.PI / 180;
            var arcs = [[-Math.PI, -Math.PI / 2 - justRight, "#5b6f86"],
                        [-Math.PI / 2 - justRight, -Math.PI / 2 + justRight, Theme.good],
                        [-Math.PI / 2 + justRight, 0, "#e0b64a"]];
            ctx.lineWidth = 14;
            for (var i = 0; i < arcs.length; ++i) {
                ctx.beginPath();
                ctx.strokeStyle = arcs[i][2];
                ctx.arc(cx, cy, r, arcs[i][0], arcs[i][1], false);
                ctx.stroke();
            }
        }
    }

    Rectangle {
        id: needle
        objectName: "needle"
        visible: gauge.showsValue
        width: 4
        height: dial.height - 18
        radius: 2
        color: Theme.text
        antialiasing: true
        x: dial.x + dial.width / 2 - width / 2
        y: dial.y + dial.height - 4 - height
        transform: Rotation {
            origin.x: needle.width / 2
            origin.y: needle.height
            angle: gauge.needleAngle
        }
    }
    Rectangle {
        width: 14; height: 14; radius: 7
        color: Theme.text
        x: dial.x + dial.width / 2 - 7
        y: dial.y + dial.height - 11
    }

    Label {
        objectName: "verdict"
        anchors.top: dial.bottom
        anchors.topMargin: 8
        anchors.horizontalCenter: parent.horizontalCenter
        visible: gauge.showsValue
        text: gauge.verdict
        Accessible.name: text
        font.pixelSize: Theme.titleSize
        font.bold: true
        color: Math.abs(gauge.rate - 100) < 20 ? Theme.good : Theme.warn
    }
}
