import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A sound of a memo: plays, shows where it is, and the words that are spoken.
Rectangle {
    id: strip
    required property memoHandle memo
    required property DesktopScreens screens
    required property string path
    required property string fileName
    required property string name
    required property bool isNamed
    required property bool isMissing
    property bool unfolded: false
    readonly property PlayerScreen player: screens.player
    readonly property bool current: path !== "" && player.path === path
    readonly property bool playing: current && player.playing
    readonly property string trouble: isMissing ? qsTr("录音文件不在了") : current ? player.failure : ""
    signal menuAsked()
    objectName: "sound"
    implicitHeight: content.implicitHeight
    height: implicitHeight
    radius: 10
    color: Theme.sunken
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("录音 %1").arg(name)
    MouseArea { anchors.fill: parent; acceptedButtons: Qt.RightButton; onClicked: strip.menuAsked() }
    SpokenText { id: said; memo: strip.memo; fileName: strip.fileName; position: strip.current ? strip.player.position : -1 }

    Column {
        id: content
        width: parent.width
        Item {
            width: parent.width
            height: 48
            PlayButton { id: button; objectName: "soundPlay"; x: 10; anchors.verticalCenter: parent.verticalCenter; enabled: !strip.isMissing; playing: strip.playing; onClicked: strip.player.toggle(strip.path) }
            Slider {
                id: slider
                objectName: "soundPlace"
                anchors { left: button.right; leftMargin: 12; right: side.left; rightMargin: 12; verticalCenter: parent.verticalCenter }
                height: 32
                padding: 0
                live: false
                to: Math.max(wave.seconds, 1)
                stepSize: 5
                enabled: wave.seconds > 0 && !strip.isMissing
                Accessible.name: qsTr("播放位置")
                background: Waveform {
                    id: wave
                    implicitHeight: 32
                    player: strip.player
                    path: strip.isMissing ? "" : strip.path
                    heard: slider.visualPosition
                    tint: Theme.accent
                    rest: Theme.lineStrong
                    FocusRing { target: slider; anchors.margins: -4; radius: 8 }
                }
                handle: Rectangle { visible: strip.current || slider.pressed; x: slider.visualPosition * (slider.width - width); y: 2; width: 2; height: slider.height - 4; radius: 1; color: Theme.accent }
                onMoved: strip.player.seek(strip.path, value)
                Keys.onSpacePressed: strip.player.toggle(strip.path)
                Binding { slider.value: strip.current ? strip.player.position : 0; when: !slider.pressed; restoreMode: Binding.RestoreNone }
            }
            Row {
                id: side
                anchors { right: parent.right; rightMargin: 14; verticalCenter: parent.verticalCenter }
                spacing: 10
                LinkButton { objectName: "soundSpeed"; visible: strip.current; anchors.verticalCenter: parent.verticalCenter; text: strip.player.speed + "×"; fontSize: Theme.small; ink: strip.player.speed === 1 ? Theme.text2 : Theme.accent; Accessible.name: qsTr("速度 %1 倍").arg(strip.player.speed); onClicked: strip.player.changeSpeed() }
                Text { objectName: "soundTime"; visible: wave.seconds > 0; anchors.verticalCenter: parent.verticalCenter; text: (strip.current ? strip.player.clock(slider.value) + " / " : "") + strip.player.clock(wave.seconds); color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.small } }
                IconButton { objectName: "soundWords"; visible: said.text !== ""; anchors.verticalCenter: parent.verticalCenter; implicitWidth: 26; implicitHeight: 26; glyphSize: 16; checked: strip.unfolded; glyph: "doc.text"; hint: strip.unfolded ? qsTr("收起文字") : qsTr("显示文字"); onClicked: strip.unfolded = !strip.unfolded }
            }
        }
        Text { visible: text; leftPadding: 52; rightPadding: 14; bottomPadding: 8; width: parent.width; elide: Text.ElideRight; text: strip.isNamed ? strip.name : ""; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        Text { objectName: "soundTrouble"; visible: text; leftPadding: 52; rightPadding: 14; bottomPadding: 10; width: parent.width; wrapMode: Text.Wrap; text: strip.trouble; color: Theme.bad; font { family: Theme.sans; pixelSize: Theme.small } Accessible.role: Accessible.AlertMessage; Accessible.name: text }
        Loader {
            width: parent.width
            active: strip.unfolded && said.text !== ""
            visible: active
            sourceComponent: Transcript { spoken: said; onWordChosen: second => strip.player.seek(strip.path, second) }
        }
    }
}
