#include <fstream>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Import/FlomoImporter.h"
#include "Platform/Text/Replacing.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

using std::filesystem::path;

constexpr std::uint64_t manyNotes = 50'000;
constexpr std::uint64_t fewNotes = 5'000;

// The notes of a corpus as flomo would export them.
path exportOf(std::uint64_t notes) {
  const path file = workspace() / fmt::format("flomo-{}.html", notes);
  std::ofstream page(file);
  visitCorpus({.memos = notes}, [&](const CorpusMemo& memo) {
    const std::string text = replacingAll(replacingAll(memo.body, "&", "&amp;"), "<", "&lt;");
    page << "<div class=\"memo\"><div class=\"time\">" << memo.day.string() << ' '
         << memo.frontmatter.time << ":00</div><div class=\"content\"><p>"
         << replacingAll(text, "\n", "</p><p>") << "</p></div></div>\n";
  });
  if (!page.flush()) throw std::runtime_error("no export was written");
  return file;
}

path freshRoot() {
  static int count = 0;
  return workspace() / fmt::format("imported-{}", ++count);
}

// Writes the same bytes into as many files of as many folders, and waits for the disk once.
void copyBare(const path& from, const path& to) {
  std::filesystem::create_directories(to);
  std::string bytes;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(from)) {
    const path target = to / entry.path().lexically_relative(from);
    if (entry.is_directory()) {
      std::filesystem::create_directory(target);
      continue;
    }
    const path temporary = target.parent_path() / ".tmp";
    bytes.resize(entry.file_size());
    std::ifstream(entry.path()).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    const bool isWritten = ::write(file, bytes.data(), bytes.size()) >= 0;
    ::close(file);
    std::filesystem::rename(temporary, target);
    if (!isWritten) throw std::runtime_error("bare write failed");
  }
  const int folder = ::open(to.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (::syncfs(folder) != 0) throw std::runtime_error("bare sync failed");
  ::close(folder);
}

void import(const path& file, const path& root) {
  const MemoService service(contextFor(root));
  if (FlomoImporter(service).importFromURL(file).memosImported == 0)
    throw std::runtime_error("nothing was imported");
}

Steps importSteps() {
  const path file = exportOf(manyNotes);
  const path imported = freshRoot();
  import(file, imported);
  return {.floor = [=](std::size_t) { copyBare(imported, freshRoot()); },
          .ours = [=](std::size_t) { import(file, freshRoot()); },
          .units = manyNotes};
}

// In KiB, of this process: "VmRSS" or "VmHWM".
std::size_t memoryNow(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(field)) return std::stoul(line.substr(field.size() + 1));
  throw std::runtime_error("the kernel tells no " + field);
}

// The most memory, in bytes, that an import adds to what the process has. In a child, because what
// was freed once stays with a process.
double memoryOfImporting(const path& file) {
  const path root = freshRoot();
  const path told = workspace() / "memory";
  const pid_t child = ::fork();
  if (child == 0) {
    std::ofstream("/proc/self/clear_refs") << 5;  // begins VmHWM anew
    const std::size_t before = memoryNow("VmRSS");
    import(file, root);
    std::ofstream(told) << memoryNow("VmHWM") - before;
    ::_exit(0);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error("nothing was imported");
  double kibibytes = 0;
  std::ifstream(told) >> kibibytes;
  return kibibytes * 1024;
}

Steps memorySteps() {
  const path few = exportOf(fewNotes);
  const path many = exportOf(manyNotes);
  const auto memory = std::make_shared<double>(0);
  return {.floor = [=](std::size_t) { *memory = memoryOfImporting(few); },
          .ours = [=](std::size_t) { *memory = memoryOfImporting(many); },
          .bytesTaken = [=] { return *memory; }};
}

}  // namespace

// Roots are not deleted between turns: what ext4 has to forget would slow what comes next.
void registerImports() {
  registerComparison({.what = "flomo: 50,000 notes imported (floor: bare copies, one syncfs)",
                      .prepare = importSteps,
                      .goal = {.perSecond = 5000},
                      .turns = 1});
  registerComparison({.what = "memory: 50,000 notes imported, to 5,000",
                      .prepare = memorySteps,
                      .goal = {.ratio = 1.5},
                      .turns = 1});
}

}  // namespace nomely::bench
