import QtQuick
import QtQuick.Templates as T

// A popup that is made when it is first opened: a window starts without it. The popup names its
// parent itself, an item or what lies over the whole window.
Loader {
    readonly property Item overlay: T.Overlay.overlay
    readonly property bool opened: item !== null && item.opened // qmllint disable type
    active: false
    function made() {
        active = true
        return item
    }
    function open() { made().open() }
}
