#include "Platform/Network/HttpTransfer.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include <fmt/format.h>
#include <unistd.h>

#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

using Kind = HttpError::Kind;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool isHeaderText(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
  });
}

std::string inWords(milliseconds limit) {
  if (limit.count() % 1000 != 0) return fmt::format("{} 毫秒", limit.count());
  return fmt::format("{} 秒", limit.count() / 1000);
}

std::string inWords(std::uint64_t bytes) {
  return bytes >= 1 << 20 ? fmt::format("{} MiB", bytes >> 20) : fmt::format("{} 字节", bytes);
}

}  // namespace

HttpTransfer::HttpTransfer(const HttpRequest& request, const HttpTarget& target,
                           const NetworkOptions& options)
    : request_(request),
      body_(request.maxReply, request.into),
      mime_(nullptr, curl_.curl_mime_free),
      headers_(nullptr, curl_.curl_slist_free_all),
      handle_(target.scheme == HttpTarget::Scheme::http ? CurlHandle::Reach::privateNetwork
                                                        : CurlHandle::Reach::everywhere,
              target.host, options) {
  setConnection();
  setHeaders();
  request_.parts.empty() ? setBody() : setParts();
}

void HttpTransfer::setConnection() {
  handle_.set(CURLOPT_URL, request_.url.c_str());
  const auto connecting = std::min<milliseconds>(request_.idleTimeout, std::chrono::hours(24));
  handle_.set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connecting.count()));
  handle_.set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request_.maxReply));
  handle_.set(CURLOPT_WRITEFUNCTION, &HttpTransfer::receive);
  handle_.set(CURLOPT_WRITEDATA, static_cast<void*>(this));
}

void HttpTransfer::setHeaders() {
  const auto add = [this](const std::string& line) {
    curl_slist* const longer = curl_.curl_slist_append(headers_.get(), line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    static_cast<void>(headers_.release());
    headers_.reset(longer);
  };
  for (const auto& [name, value] : request_.headers) {
    if (!isHeaderText(name) || !isHeaderText(value))
      throw HttpError(Kind::refused, "密钥或设置里有换行等控制字符，请重新填写");
    add(value.empty() ? name + ";" : fmt::format("{}: {}", name, value));
  }
  add("User-Agent: nomely");
  // A large body would first wait a second for servers that don't know this question.
  add("Expect:");
  handle_.set(CURLOPT_HTTPHEADER, headers_.get());
}

void HttpTransfer::setBody() {
  using Method = HttpRequest::Method;
  if (request_.method == Method::get) {
    handle_.set(CURLOPT_HTTPGET, 1L);
    return;
  }
  if (request_.method != Method::remove || !request_.body.empty()) {
    handle_.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    handle_.set(CURLOPT_POSTFIELDS, request_.body.data());
  }
  if (request_.method == Method::patch) handle_.set(CURLOPT_CUSTOMREQUEST, "PATCH");
  if (request_.method == Method::remove) handle_.set(CURLOPT_CUSTOMREQUEST, "DELETE");
}

void HttpTransfer::setParts() {
  mime_.reset(curl_.curl_mime_init(handle_.get()));
  for (const HttpRequest::Part& part : request_.parts) {
    curl_mimepart* const made = curl_.curl_mime_addpart(mime_.get());
    curl_.curl_mime_name(made, part.name.c_str());
    if (part.file) {
      if (::access(part.file->c_str(), R_OK) != 0) throw FileError("读取", *part.file, errno);
      curl_.curl_mime_filedata(made, part.file->c_str());
    } else {
      curl_.curl_mime_data(made, part.value.data(), part.value.size());
    }
    // Without one given here a file's own name would be told.
    curl_.curl_mime_filename(made, part.fileName.empty() ? nullptr : part.fileName.c_str());
    if (!part.contentType.empty()) curl_.curl_mime_type(made, part.contentType.c_str());
  }
  handle_.set(CURLOPT_MIMEPOST, mime_.get());
}

HttpResponse HttpTransfer::run(const std::stop_token& stop) {
  const Time begun = steady_clock::now();
  Time lastMoved = begun;
  curl_off_t moved = 0;
  const CURLcode code = handle_.perform(stop, [&] {
    if (const curl_off_t count = bytesMoved(); count != moved) {
      moved = count;
      lastMoved = steady_clock::now();
    }
    return untilLimit(begun, lastMoved);
  });
  body_.throwIfUnwritten();
  if (body_.isTooLarge() || code == CURLE_FILESIZE_EXCEEDED)
    throw HttpError(Kind::tooLarge, fmt::format("{} 的回复超过了 {}，没有读完", handle_.host(),
                                                inWords(request_.maxReply)));
  if (code != CURLE_OK) throw handle_.failure(code);
  return {static_cast<int>(handle_.info<long>(CURLINFO_RESPONSE_CODE)), body_.finished()};
}

milliseconds HttpTransfer::untilLimit(Time begun, Time lastMoved) const {
  const Time now = steady_clock::now();
  if (now - begun >= request_.wholeTimeout)
    throw HttpError(Kind::timeout, fmt::format("{} 过了 {} 还没有回复完，请稍后重试",
                                               handle_.host(), inWords(request_.wholeTimeout)));
  if (now - lastMoved >= request_.idleTimeout)
    throw HttpError(Kind::timeout, fmt::format("{} 在 {} 内没有回应，请检查网络后重试",
                                               handle_.host(), inWords(request_.idleTimeout)));
  return std::chrono::ceil<milliseconds>(
      std::min(begun + request_.wholeTimeout, lastMoved + request_.idleTimeout) - now);
}

curl_off_t HttpTransfer::bytesMoved() const {
  return handle_.info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T) +
         handle_.info<curl_off_t>(CURLINFO_SIZE_DOWNLOAD_T) +
         handle_.info<long>(CURLINFO_REQUEST_SIZE) + handle_.info<long>(CURLINFO_HEADER_SIZE);
}

std::size_t HttpTransfer::receive(const char* bytes, std::size_t size, std::size_t count,
                                  void* self) {
  const std::size_t length = size * count;
  return static_cast<HttpTransfer*>(self)->body_.take({bytes, length}) ? length : 0;
}

}  // namespace nomely
