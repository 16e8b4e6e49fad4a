#include "Diagrams/PageFolder.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace nomely {

QString pagePath(const QString& name) {
  const QString program = QCoreApplication::applicationDirPath();
  for (const QString& folder : {program, program + "/Mermaid"})
    if (const QFileInfo page(folder + '/' + name); page.isReadable())
      return page.canonicalFilePath();
  return {};
}

}  // namespace nomely
