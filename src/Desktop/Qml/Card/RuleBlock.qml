import QtQuick
import Nomely

Item {
    implicitHeight: 9
    Rectangle { y: 4; width: parent.width; height: 1; color: Theme.lineStrong }
}
