import QtQuick
import Nomely

// An emoji for a tag: one of these, or any that is typed.
Sheet {
    id: sheet
    required property SidebarScreen sidebar
    property string tag
    property string emoji
    title: qsTr("给标签「%1」一个表情").arg(tag)
    width: Math.min(parent ? parent.width - 32 : 380, 380)
    onAboutToShow: field.text = emoji
    contentItem: Column {
        spacing: 14
        Text { width: parent.width; wrapMode: Text.Wrap; text: sheet.title; color: Theme.text; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        Grid {
            objectName: "emojiGrid"
            columns: 8
            Repeater {
                model: "🌿 🏠 🍚 🏃 📖 💼 🎙️ 🌙 👶 👪 💡 🎬 🎵 ✍️ 🧘 🏥 💰 🛒 🧳 🚄 🐱 🌸 ☀️ 🌧️ 🎂 🎁 📷 🎨 🔧 💬 ⭐ ❤️".split(" ")
                IconButton {
                    id: choice
                    required property string modelData
                    objectName: "emojiChoice"
                    width: (sheet.width - 48) / 8
                    height: 38
                    hint: modelData
                    checked: sheet.emoji === modelData
                    contentItem: Text { horizontalAlignment: Text.AlignHCenter; verticalAlignment: Text.AlignVCenter; text: choice.modelData; font { family: Theme.emoji; pixelSize: 20 } }
                    onClicked: sheet.choose(modelData)
                }
            }
        }
        TextInputLine { id: field; objectName: "emojiField"; focus: true; width: parent.width; label: qsTr("表情"); placeholderText: qsTr("或输入一个表情"); onAccepted: if (apply.enabled) sheet.choose(text) }
        Row {
            anchors.right: parent.right
            spacing: 10
            PushButton { objectName: "noEmoji"; visible: sheet.emoji; text: qsTr("不要表情"); onClicked: sheet.choose("") }
            PushButton { text: qsTr("取消"); onClicked: sheet.close() }
            PushButton { id: apply; objectName: "emojiApply"; primary: true; text: qsTr("确定"); enabled: sheet.sidebar.isEmoji(field.text); onClicked: sheet.choose(field.text) }
        }
    }
    function choose(value) {
        close()
        sidebar.setEmoji(tag, value)
    }
}
