import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Window
import Nomely

// A diagram: its picture, which opens in full, or its source where there is none, with the reason.
Item {
    id: block
    property string code
    // How the source is shown where there is no picture; it fills the width.
    property Component sourceView: plainSource

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
        height: diagram.size.width > 0 ? Math.round(diagram.size.height * width / diagram.size.width) : 0
        focusPolicy: Qt.TabFocus
        onClicked: full.active = true
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

    Loader {
        id: full
        active: false
        sourceComponent: DiagramViewer {
            code: block.code
            visible: true
            onClosed: full.active = false
        }
    }

    Rectangle {
        id: fallback
        objectName: "diagramFallback"
        readonly property int inset: diagram.status === Diagram.Failed ? 12 : 0
        visible: block.failed
        width: parent.width
        implicitHeight: Math.max(inset > 0 ? 250 : 0, words.implicitHeight + 2 * inset)
        radius: 8
        color: inset > 0 ? Theme.badSoft : "transparent"
        Column {
            id: words
            x: fallback.inset
            y: fallback.inset
            width: parent.width - 2 * fallback.inset
            spacing: 8
            TextEdit {
                objectName: "diagramMessage"
                width: parent.width
                text: diagram.message
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                readOnly: true
                selectByMouse: true
                color: fallback.inset > 0 ? Theme.bad : Theme.text3
                selectionColor: Theme.selection
                selectedTextColor: Theme.text
                font { family: fallback.inset > 0 ? Theme.mono : Theme.sans; pixelSize: Theme.small }
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Loader {
                width: parent.width
                active: block.failed
                sourceComponent: block.sourceView
            }
        }
    }
}
