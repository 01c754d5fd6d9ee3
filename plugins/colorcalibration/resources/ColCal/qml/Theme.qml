pragma Singleton
import QtQuick 2.15

// One calm palette for every screen: slate text on a light background,
// one teal accent for the active step and the primary action.
QtObject {
    readonly property color background: "#f4f6f8"
    readonly property color surface: "#ffffff"
    readonly property color border: "#d5dbe1"
    readonly property color text: "#1f2a33"
    readonly property color mutedText: "#5b6873"
    readonly property color accent: "#1f7a8c"
    readonly property color accentLight: "#cfe5ea"
    readonly property color stepDone: "#1f4e5f"
    readonly property color stepTodo: "#dfe5ea"
    readonly property color good: "#2e8b57"
    readonly property color warn: "#c77d1a"
    readonly property color bad: "#b63a3a"
    readonly property color gridLine: "#ffd54a"
    readonly property color patchLine: "#7fd4ff"

    readonly property int spacing: 12
    readonly property int radius: 6
    readonly property int fontSize: 13
    readonly property int titleSize: 18
}
