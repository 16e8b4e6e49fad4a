#include <cstdio>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include "bench/Corpus.h"

namespace {

std::string describe(const CLI::Error& error) {
  std::string_view problem = "参数有误";
  if (error.get_name() == "RequiredError") problem = "缺少必要的参数";
  if (error.get_name() == "ValidationError" || error.get_name() == "ConversionError")
    problem = "参数的值不合要求";
  return fmt::format("{}：{}\n用法见 nomely-corpus --help\n", problem, error.what());
}

using nomely::bench::CorpusOptions;
using nomely::bench::CorpusSummary;

void run(const CorpusOptions& options, const std::string& folder) {
  const bool onTerminal = ::isatty(STDERR_FILENO) != 0;
  const CorpusSummary summary =
      nomely::bench::writeCorpus(options, folder, [&](std::uint64_t written) {
        if (onTerminal)
          fmt::print(stderr, "\r已写入 {} / {} 条（{}%）", written, options.memos,
                     written * 100 / options.memos);
      });
  if (onTerminal) fmt::print(stderr, "\r\x1B[K");
  fmt::print("{} 天，{} 条笔记，{} 字节；{} 个附件，{} 字节\n", summary.days, summary.memos,
             summary.memoBytes, summary.attachments, summary.mediaBytes);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("生成一个逼真的 Nomely 数据文件夹，用于测试和性能测量。参数相同，内容逐字节相同。",
               "nomely-corpus");
  CorpusOptions options;
  std::string folder;
  app.add_option("N", options.memos, "笔记条数")
      ->required()
      ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{10000000}));
  app.add_option("DIR", folder, "写入的文件夹，须不存在或为空")->required();
  app.add_option("--seed", options.seed, "随机种子")->capture_default_str();
  app.add_option("--media", options.mediaBytes, "附件总字节数，可带单位（500MB）；不给则附件极小")
      ->transform(CLI::AsSizeValue(true));
  app.failure_message([](const CLI::App*, const CLI::Error& error) { return describe(error); });
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error);
    return status == 0 ? 0 : 2;
  }
  try {
    run(options, folder);
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
}
