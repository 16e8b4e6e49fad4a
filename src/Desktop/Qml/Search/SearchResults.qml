import QtQuick
import QtQuick.Controls.Basic
import Nomely

// What a search found, under the line in which it is typed.
Item {
    id: found
    required property SearchScreen search
    property real maximumHeight: 480
    readonly property bool isWanted: search.hasWords
    implicitHeight: isWanted ? Math.min(maximumHeight, body.height + 12) : 0

    Binding { target: found.search.results; property: "mark"; value: Qt.tint(Theme.raised, Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, Theme.dark ? 0.36 : 0.18)) }

    Column {
        id: body
        x: 6
        y: 6
        width: parent.width - 12
        ListView {
            id: list
            objectName: "searchResults"
            width: parent.width
            height: Math.min(contentHeight, found.maximumHeight - 12 - foot.height)
            visible: count > 0
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            flickDeceleration: 6000
            reuseItems: true
            model: found.search.results
            currentIndex: found.search.current
            highlightFollowsCurrentItem: false
            onCurrentIndexChanged: if (currentIndex >= 0) positionViewAtIndex(currentIndex, ListView.Contain)
            ScrollBar.vertical: FlatScrollBar {}
            Accessible.role: Accessible.List
            Accessible.name: qsTr("搜索结果")
            delegate: SearchResultRow {
                objectName: "searchResult"
                width: list.width
                isCurrent: ListView.isCurrentItem
                onClicked: found.search.open(index)
            }
        }
        Item {
            id: foot
            width: parent.width
            height: list.visible ? 34 : notice.implicitHeight + 40
            Text {
                id: notice
                objectName: "searchNotice"
                visible: !list.visible
                anchors { left: parent.left; right: parent.right; margins: 12; verticalCenter: parent.verticalCenter; verticalCenterOffset: found.search.foundNothing ? -11 : 0 }
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: found.search.foundNothing ? found.search.nothingText : found.search.isSlow ? qsTr("正在读取笔记…") : ""
                color: Theme.text2
                font { family: Theme.serif; pixelSize: 15 }
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            LinkButton { objectName: "searchClear"; visible: found.search.foundNothing; anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 8 } text: qsTr("换几个字再找"); onClicked: found.cleared() }
            Text { visible: list.visible; x: 12; anchors.verticalCenter: parent.verticalCenter; text: qsTr("↑↓ 选择   ↵ 打开   Esc 返回"); color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny } Accessible.ignored: true }
            LinkButton { objectName: "searchShowAll"; visible: list.visible; anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter } fontSize: Theme.small; text: qsTr("全部列出"); onClicked: found.search.showAll() }
        }
    }
    signal cleared()
    onCleared: search.query = ""
}
