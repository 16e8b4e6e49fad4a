import QtQuick
import Nomely

// One of a few words that stand side by side.
Rectangle {
    id: choice
    property string label
    property int current: 0
    default property alias options: row.data
    implicitWidth: row.width + 6
    implicitHeight: 34
    radius: 9
    color: Theme.sunken
    border { width: 1; color: Theme.line }
    Accessible.role: Accessible.Grouping
    Accessible.name: label
    Row { id: row; x: 3; y: 3 }
}
