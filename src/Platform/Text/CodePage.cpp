#include "Platform/Text/CodePage.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include <unicode/ucnv.h>

namespace nomely {
namespace {

// The names under which ICU knows them: no rule leads from every number to its name.
constexpr struct {
  int number;
  const char* name;
} encodings[] = {
    {437, "ibm-437"},       {850, "ibm-850"},       {852, "ibm-852"},       {866, "ibm-866"},
    {874, "windows-874"},   {932, "windows-932"},   {936, "windows-936"},   {949, "windows-949"},
    {950, "windows-950"},   {1250, "windows-1250"}, {1251, "windows-1251"}, {1252, "windows-1252"},
    {1253, "windows-1253"}, {1254, "windows-1254"}, {1255, "windows-1255"}, {1256, "windows-1256"},
    {1257, "windows-1257"}, {1258, "windows-1258"}, {10000, "macintosh"},   {54936, "gb18030"},
    {65001, "UTF-8"},
};

const char* nameOf(int number) {
  const auto* const found =
      std::ranges::find(encodings, number, [](const auto& encoding) { return encoding.number; });
  return found == std::end(encodings) ? "windows-1252" : found->name;
}

}  // namespace

struct CodePage::Converter {
  UConverter* handle = nullptr;

  Converter() = default;
  ~Converter() { ucnv_close(handle); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
};

CodePage::CodePage(int number) : converter_(std::make_unique<Converter>()) {
  UErrorCode status = U_ZERO_ERROR;
  converter_->handle = ucnv_open(nameOf(number), &status);
  if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

CodePage::~CodePage() = default;
CodePage::CodePage(CodePage&&) noexcept = default;
CodePage& CodePage::operator=(CodePage&&) noexcept = default;

std::u16string CodePage::decode(std::string_view bytes) {
  // No byte of these encodings gives more than two units.
  std::u16string text(2 * bytes.size() + 2, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  ucnv_resetToUnicode(converter_->handle);
  const int32_t length =
      ucnv_toUChars(converter_->handle, text.data(), static_cast<int32_t>(text.size()),
                    bytes.data(), static_cast<int32_t>(bytes.size()), &status);
  text.resize(U_FAILURE(status) ? 0 : static_cast<std::size_t>(length));
  return text;
}

}  // namespace nomely
