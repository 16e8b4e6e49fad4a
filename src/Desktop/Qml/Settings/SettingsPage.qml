import QtQuick
import QtQuick.Controls.Basic
import Nomely

// What can be set. Sections are a plain list.
PageFrame {
    id: page
    objectName: "settingsPage"
    required property DesktopScreens screens
    readonly property SettingsScreen settings: screens.settings
    title: qsTr("设置")
    onBackAsked: screens.navigation.back()
    Component.onCompleted: settings.open()
    Flickable {
        id: view
        anchors.fill: parent
        contentHeight: sections.height + 72
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: FlatScrollBar {}
        Column {
            id: sections
            y: 8
            width: parent.width
            spacing: 26
            SettingsSection {
                title: qsTr("外观")
                SettingsLine {
                    text: qsTr("颜色")
                    Choice {
                        label: qsTr("颜色")
                        ChoiceOption { objectName: "lookFollow"; group: qsTr("颜色"); text: qsTr("跟随系统"); checked: page.settings.look === SettingsScreen.FollowDesktop; onClicked: page.settings.look = SettingsScreen.FollowDesktop }
                        ChoiceOption { objectName: "lookLight"; group: qsTr("颜色"); text: qsTr("浅色"); checked: page.settings.look === SettingsScreen.Light; onClicked: page.settings.look = SettingsScreen.Light }
                        ChoiceOption { objectName: "lookDark"; group: qsTr("颜色"); text: qsTr("深色"); checked: page.settings.look === SettingsScreen.Dark; onClicked: page.settings.look = SettingsScreen.Dark }
                    }
                }
                SettingsLine {
                    text: qsTr("正文字号")
                    SizeStepper { objectBase: "bodySize"; label: qsTr("正文字号"); value: page.settings.bodyFontSize; onChosen: value => page.settings.bodyFontSize = value }
                }
                SettingsLine {
                    text: qsTr("标签字号")
                    SizeStepper { objectBase: "tagSize"; label: qsTr("标签字号"); value: page.settings.tagFontSize; most: 24; onChosen: value => page.settings.tagFontSize = value }
                }
                SettingsLine {
                    text: qsTr("链接")
                    note: qsTr("卡片带上标题，占地方多一些。")
                    isLast: true
                    Choice {
                        label: qsTr("链接")
                        ChoiceOption { objectName: "linkText"; group: qsTr("链接"); text: qsTr("文字"); checked: !page.settings.linksAsCards; onClicked: page.settings.linksAsCards = false }
                        ChoiceOption { objectName: "linkCard"; group: qsTr("链接"); text: qsTr("卡片"); checked: page.settings.linksAsCards; onClicked: page.settings.linksAsCards = true }
                    }
                }
            }
            SettingsSection {
                title: qsTr("列表")
                SettingsLine {
                    text: qsTr("显示序号")
                    Toggle { objectName: "showsNumber"; label: qsTr("显示序号"); checked: page.settings.showsSeriesNumber; onToggled: page.settings.showsSeriesNumber = checked }
                }
                SettingsLine {
                    text: qsTr("序号从早到晚")
                    note: qsTr("关着时，最新的一条是 1。")
                    Toggle { objectName: "numberAscending"; label: qsTr("序号从早到晚"); checked: page.settings.seriesNumberAscending; onToggled: page.settings.seriesNumberAscending = checked }
                }
                SettingsLine {
                    text: qsTr("标签顺序")
                    note: qsTr("标签的颜色和图标在侧栏里改：在标签上点右键。")
                    isLast: true
                    Choice {
                        label: qsTr("标签顺序")
                        ChoiceOption { objectName: "orderDate"; group: qsTr("标签顺序"); text: qsTr("最近用过"); checked: page.settings.tagOrder === SettingsScreen.ByDate; onClicked: page.settings.tagOrder = SettingsScreen.ByDate }
                        ChoiceOption { objectName: "orderCount"; group: qsTr("标签顺序"); text: qsTr("条数"); checked: page.settings.tagOrder === SettingsScreen.ByCount; onClicked: page.settings.tagOrder = SettingsScreen.ByCount }
                        ChoiceOption { objectName: "orderName"; group: qsTr("标签顺序"); text: qsTr("名称"); checked: page.settings.tagOrder === SettingsScreen.ByName; onClicked: page.settings.tagOrder = SettingsScreen.ByName }
                        ChoiceOption { objectName: "orderActivity"; group: qsTr("标签顺序"); text: qsTr("活跃"); checked: page.settings.tagOrder === SettingsScreen.ByActivity; onClicked: page.settings.tagOrder = SettingsScreen.ByActivity }
                    }
                }
            }
            SettingsSection {
                title: qsTr("数据")
                SettingsLine {
                    text: qsTr("数据目录")
                    note: page.settings.rootName + (page.settings.rootNote ? "\n" + page.settings.rootNote : "")
                    PushButton { objectName: "openRoot"; text: qsTr("打开"); onClicked: page.settings.openRoot() }
                    PushButton { objectName: "changeRoot"; text: qsTr("换个位置"); onClicked: picker.open() }
                }
                SettingsLine {
                    text: qsTr("最近的备份")
                    note: page.settings.isBackupOld ? qsTr("可以用命令 nomely backup 做一份新的。") : ""
                    isLast: true
                    Text { objectName: "backupNote"; text: page.settings.backupNote; color: page.settings.isBackupOld ? Theme.warn : Theme.text2; font { family: Theme.sans; pixelSize: Theme.normal } }
                }
            }
            Text {
                objectName: "about"
                width: parent.width
                leftPadding: 2
                wrapMode: Text.Wrap
                lineHeight: 1.2
                text: qsTr("Nomely %1 · 每条笔记是一个普通的 Markdown 文件；备份在 %2/.backups，设置在 %2/_config。").arg(page.settings.version).arg(page.settings.rootName)
                color: Theme.text3
                font { family: Theme.sans; pixelSize: Theme.small }
            }
        }
    }
    RootPicker { id: picker; settings: page.settings }
}
