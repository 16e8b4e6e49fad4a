pragma Singleton
import QtQuick

// Every colour, size and font of the window. Nothing else names a colour.
QtObject {
    property bool dark: false
    property bool animated: true
    property real bodyFontSize: 14
    property real tagFontSize: 12

    readonly property color window: dark ? "#1B1A18" : "#F6F3EC"
    readonly property color sidebar: dark ? "#161513" : "#EEEAE0"
    readonly property color card: dark ? "#242220" : "#FFFEFB"
    readonly property color raised: dark ? "#2C2A27" : "#FFFFFF"
    readonly property color sunken: dark ? "#1F1D1B" : "#F4F0E7"
    readonly property color line: dark ? "#363330" : "#E4DED1"
    readonly property color lineStrong: dark ? "#4A4641" : "#CFC7B6"
    readonly property color hover: Qt.rgba(text.r, text.g, text.b, 0.05)
    // Under a picture that fills the window, in either look.
    readonly property color backdrop: "#F4141311"
    readonly property color backdropText: "#F0EADD"
    readonly property color backdropVeil: "#73141311"
    readonly property color backdropHover: "#28FFFFFF"
    readonly property color scrim: dark ? "#A0000000" : "#66201A10"

    readonly property color outline: dark ? "#807869" : "#948B79"
    readonly property color text: dark ? "#DDD7CB" : "#26231E"
    readonly property color text2: dark ? "#B3AB9D" : "#5F594E"
    readonly property color text3: dark ? "#9A9284" : "#6E675B"

    readonly property color accent: dark ? "#E8906F" : "#A8452B"
    readonly property color accentSoft: dark ? "#3B2A22" : "#F7E6DE"
    readonly property color accentText: dark ? "#26110A" : "#FFFFFF"
    readonly property color link: dark ? "#8DB8EC" : "#2A629F"
    readonly property color good: dark ? "#8CC79A" : "#38734A"
    readonly property color goodSoft: dark ? "#22302A" : "#E3EFE6"
    readonly property color warn: dark ? "#E0B35A" : "#8A5B00"
    readonly property color warnSoft: dark ? "#332B1C" : "#F7ECD3"
    readonly property color bad: dark ? "#F0938A" : "#B3261E"
    readonly property color badSoft: dark ? "#3A2422" : "#F9E3E0"
    readonly property color linkSoft: dark ? "#1F2A36" : "#E4EDF6"
    readonly property color mark: "#FFEB66"
    readonly property color markText: "#26231E"
    readonly property color selection: dark ? "#5A3A2C" : "#F3D8CB"
    // Of messages that lie over the page.
    readonly property color toast: dark ? "#EFE9DC" : "#26231E"
    readonly property color toastText: dark ? "#26231E" : "#F6F3EC"
    readonly property color toastAction: dark ? "#A8452B" : "#F0A386"

    readonly property var heat: dark
        ? ["#242220", "#33271F", "#533626", "#86523A", "#D9825F"]
        : ["#E7E2D6", "#F5E3D9", "#EBC8B6", "#DDA188", "#B9573A"]
    readonly property var heatText: dark
        ? ["#9A9284", "#D9CFC2", "#EFE3D8", "#FBF3EC", "#1B1411"]
        : ["#736C5F", "#6B3D2C", "#5B2F20", "#40190D", "#FFFFFF"]
    // Offered as colours of tags; each is told from its neighbours by those who see no red or green.
    readonly property var tagColors: ["#B9573A", "#C9892B", "#8A8F2E", "#4C8A5B", "#2F8C8C", "#3F7CB8", "#6C63B5", "#A4578F", "#8C7B6B"]

    readonly property string sans: "Noto Sans CJK SC"
    readonly property string serif: "Noto Serif CJK SC"
    readonly property string mono: "DejaVu Sans Mono"
    readonly property string emoji: "Noto Color Emoji"

    readonly property int tiny: 11
    readonly property int small: 12
    readonly property int normal: 13
    readonly property real body: bodyFontSize + 1
    readonly property real editor: bodyFontSize + 3
    readonly property int heading: 17
    readonly property int title: 22
    readonly property int radius: 12
    readonly property int column: 720
    readonly property int motion: animated ? 120 : 0
    // Per cent of the face's own line height, which is 1.45 em.
    readonly property int lineHeight: 118
}
