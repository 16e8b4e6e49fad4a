import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Window
import Nomely

// A diagram: its picture, or its source where there is none, with the reason.
Item {
    id: block
    property string code
    // How the source is shown where there is no picture; it fills the width.
    property Component sourceView: plainSource
    // The picture is to be looked at in full.
    signal opened(url picture)

    readonly property bool failed: diagram.status === Diagram.Failed || diagram.status === Diagram.Missing
    implicitHeight: failed ? fallback.implicitHeight : Math.max(50, diagram.status === Diagram.Drawn ? shot.height : diagram.size.height)
    implicitWidth: diagram.size.width

    Diagram {
        id: diagram
        objectName: "diagram"
        code: block.code
        dark: Theme.dark
        pixelRatio: block.Screen.devicePixelRatio
    }

    Rectangle {
        objectName: "diagramWaiting"
        anchors.fill: parent
        visible: diagram.status === Diagram.Waiting
        radius: 8
        color: Theme.sunken
        Text {
            anchors.centerIn: parent
            text: qsTr("正在画图…")
            color: Theme.text3
            font { family: Theme.sans; pixelSize: Theme.small }
        }
    }

    AbstractButton {
        id: shot
        objectName: "diagramPicture"
        visible: diagram.status === Diagram.Drawn
        width: Math.min(block.width, diagram.size.width)
        height: diagram.size.width > 0 ? diagram.size.height * width / diagram.size.width : 0
        focusPolicy: Qt.TabFocus
        onClicked: block.opened(diagram.picture)
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
        Accessible.role: Accessible.Button
        Accessible.name: qsTr("图表：%1").arg(block.code)
        Accessible.description: qsTr("打开大图")
        background: FocusRing { target: shot }
        contentItem: Image {
            source: diagram.picture
            cache: false
            smooth: true
            fillMode: Image.PreserveAspectFit
        }
        HoverHandler { cursorShape: Qt.PointingHandCursor }
    }

    Component {
        id: plainSource
        TextEdit {
            objectName: "diagramSource"
            text: block.code
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            readOnly: true
            selectByMouse: true
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font { family: Theme.mono; pixelSize: Theme.body - 2 }
            Accessible.role: Accessible.StaticText
            Accessible.name: qsTr("图表的源码")
        }
    }

    Rectangle {
        id: fallback
        objectName: "diagramFallback"
        visible: block.failed
        width: parent.width
        implicitHeight: Math.max(diagram.status === Diagram.Failed ? 250 : 0, words.implicitHeight + 24)
        radius: 8
        color: Theme.sunken
        Column {
            id: words
            x: 14
            y: 12
            width: parent.width - 28
            spacing: 10
            Loader {
                width: parent.width
                active: block.failed
                sourceComponent: block.sourceView
            }
            TextEdit {
                objectName: "diagramMessage"
                width: parent.width
                text: diagram.message
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                readOnly: true
                selectByMouse: true
                color: diagram.status === Diagram.Missing ? Theme.text3 : Theme.bad
                selectionColor: Theme.selection
                selectedTextColor: Theme.text
                font { family: diagram.status === Diagram.Missing ? Theme.sans : Theme.mono; pixelSize: Theme.small }
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}
