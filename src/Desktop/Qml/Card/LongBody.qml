import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A whole body, of which no more is laid out than is looked at.
BodySelection {
    id: body
    property string keyword
    signal ticked(int line)
    signal linkActivated(string address)

    ListView {
        anchors.fill: parent
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        cacheBuffer: 400
        Accessible.role: Accessible.Document
        Accessible.name: qsTr("正文")
        ScrollBar.vertical: FlatScrollBar {}
        model: BodyBlocks {
            memo: body.memo
            whole: true
        }
        delegate: BodyPart {
            width: ListView.view.width
            selection: body
            keyword: body.keyword
            onTicked: line => body.ticked(line)
            onOpened: address => body.linkActivated(address)
        }
    }
}
