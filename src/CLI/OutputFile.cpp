#include "CLI/OutputFile.h"

#include <fmt/format.h>

#include "CLI/UsageError.h"

namespace nomely {

OutputFile::OutputFile(const std::string& name, const Session& session)
    : path_(std::filesystem::absolute(name)) {
  if (session.files().isDirectory(path_))
    throw UsageError(fmt::format("{} 是文件夹，请给出文件名", path_.string()));
  if (!session.files().isDirectory(path_.parent_path()))
    throw NameNotFoundError(fmt::format("没有这个文件夹：{}", path_.parent_path().string()));
}

bool OutputFile::confirm(const Session& session) {
  if (!session.files().exists(path_)) return true;
  replacement_ = Replacement::allow;
  return session.confirm(fmt::format("文件已存在：{}。要替换它吗？", path_.string()));
}

void OutputFile::write(const FileManager& files, const FileManager::Producer& produce) const {
  if (replacement_ == Replacement::allow)
    files.writeAtomically(path_, produce);
  else if (!files.createAtomically(path_, produce))
    throw Error("export.exists", fmt::format("文件已存在：{}", path_.string()));
}

}  // namespace nomely
