import QtQuick
import Nomely

// A row of the tags' list: a tag, or the heading of a section.
Item {
    id: entry
    required property int index
    required property bool isHeading
    required property string tag
    required property string label
    required property string memos
    required property int depth
    required property bool opens
    required property bool isOpen
    required property bool isPinned
    required property bool isCollection
    required property string tagColor
    required property string emoji
    property bool isCurrent: false
    property bool isMarked: false
    signal chosen()
    signal toggleAsked()
    signal menuAsked()
    implicitHeight: isHeading ? 40 : 31
    Accessible.role: isHeading ? Accessible.Heading : Accessible.TreeItem
    Accessible.name: memos ? qsTr("%1，%2 条").arg(label).arg(memos) : label
    Accessible.onPressAction: chosen()

    Item {
        anchors.fill: parent
        objectName: "tagHeading"
        visible: entry.isHeading
        readonly property bool acts: entry.opens || entry.tag
        Rectangle { anchors { fill: parent; topMargin: 14 } visible: entry.isMarked; radius: 8; color: "transparent"; border { width: 2; color: Theme.accent } }
        Icon { visible: entry.opens; x: 1; anchors.verticalCenter: name.verticalCenter; name: entry.isOpen ? "down" : "right"; size: 10; weight: 2.4; tint: Theme.text3 }
        Text { id: name; x: 12; anchors { bottom: parent.bottom; bottomMargin: 5 } text: entry.label; color: over.hovered ? Theme.text : Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny; letterSpacing: 2 } }
        HoverHandler { id: over; enabled: parent.acts; cursorShape: Qt.PointingHandCursor }
        TapHandler { enabled: parent.acts; onTapped: entry.chosen() }
    }
    SidebarRow {
        objectName: "tagRow"
        width: parent.width
        visible: !entry.isHeading
        focusPolicy: Qt.NoFocus
        text: entry.label
        glyph: entry.isCollection && !entry.emoji ? "book" : ""
        emoji: entry.emoji
        dot: entry.tagColor || Theme.lineStrong
        memos: entry.memos
        depth: entry.depth
        opens: entry.opens
        isOpen: entry.isOpen
        isCurrent: entry.isCurrent
        isMarked: entry.isMarked
        Accessible.ignored: true
        onClicked: entry.chosen()
        onToggleAsked: entry.toggleAsked()
        onMenuAsked: entry.menuAsked()
    }
}
