#pragma once

#include <filesystem>
#include <string>

#include "Support/TemporaryFolder.h"

namespace nomely::test {

// Stands for the program that draws: answers by what the source says, and notes each start and
// line.
class FakeDiagramProgram {
 public:
  static constexpr std::string_view pixel =
      "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJg"
      "gg==";

  explicit FakeDiagramProgram(const std::filesystem::path& folder)
      : program((folder / "diagrams").string()), log_(folder / "diagrams.log") {
    writeFile(program, R"(#!/bin/sh
echo started >> "$0.log"
while IFS= read -r line; do
  printf '%s\n' "$line" >> "$0.log"
  id=${line#*'"id":'}; id=${id%%,*}
  answer='"height":120,"width":300,"svg":"<svg>drawn</svg>","png":"'$(cat "$0.png")'"'
  case $line in
    *crash*) exit 3 ;;
    *hang*) exec sleep 1000 ;;
    *slow*) sleep 0.3 ;;
    *junk*) printf 'junk\n{"id":0,"png":""}\n[]\n' ;;
    *broken*) answer='"width":1,"height":1,"png":"AAAA"' ;;
    *empty*) answer='"width":"x"' ;;
    *error:*) kind=${line#*error:}; answer='"error":"'${kind%%;*}'","message":"line 2"' ;;
  esac
  printf '{"id":%s,%s}\n' "$id" "$answer"
done
)");
    writeFile(program + ".png", std::string(pixel));
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  }

  // How often `word` stands in what it noted.
  [[nodiscard]] int count(std::string_view word) const {
    if (!std::filesystem::exists(log_)) return 0;
    const std::string text = readFile(log_);
    int found = 0;
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += word.size())
      ++found;
    return found;
  }

  const std::string program;

 private:
  std::filesystem::path log_;
};

}  // namespace nomely::test
