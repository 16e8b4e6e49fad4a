#include "Platform/Network/HttpTransfer.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/Network/HttpFailure.h"
#include "Platform/Network/PrivateAddress.h"

namespace nomely {
namespace {

using Kind = HttpError::Kind;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

// The TLS library writes to a closed connection without asking that no signal come of it, and
// SIGPIPE ends this program.
class WithoutPipeSignal {
 public:
  WithoutPipeSignal() {
    ::sigemptyset(&pipe_);
    ::sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~WithoutPipeSignal() {
    const timespec atOnce{};
    if (!wasPending_)
      while (::sigtimedwait(&pipe_, nullptr, &atOnce) == -1 && errno == EINTR) continue;
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  WithoutPipeSignal(const WithoutPipeSignal&) = delete;
  WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

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

HttpTransfer::HttpTransfer(const HttpRequest& request, HttpTarget target)
    : request_(request),
      target_(std::move(target)),
      multi_(curl_.curl_multi_init(), curl_.curl_multi_cleanup),
      easy_(curl_.curl_easy_init(), curl_.curl_easy_cleanup),
      mime_(nullptr, curl_.curl_mime_free),
      headers_(nullptr, curl_.curl_slist_free_all),
      body_(request.maxReply, request.into) {
  if (!multi_ || !easy_) throw std::bad_alloc();
  setConnection();
  setHeaders();
  request_.parts.empty() ? setBody() : setParts();
  curl_.curl_multi_add_handle(multi_.get(), easy_.get());
}

HttpTransfer::~HttpTransfer() {
  const WithoutPipeSignal quiet;
  curl_.curl_multi_remove_handle(multi_.get(), easy_.get());
  easy_.reset();
  multi_.reset();
}

template <typename Value>
void HttpTransfer::set(CURLoption option, Value value) const {
  if (curl_.curl_easy_setopt(easy_.get(), option, value) != CURLE_OK)
    throw HttpError(Kind::connection, "系统里的网络组件 libcurl 过旧，请升级系统后重试");
}

template <typename Value>
Value HttpTransfer::info(CURLINFO which) const {
  Value value{};
  curl_.curl_easy_getinfo(easy_.get(), which, &value);
  return value;
}

void HttpTransfer::setConnection() {
  set(CURLOPT_URL, request_.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_NOSIGNAL, 1L);
  // Or the end of a request would wait for a look-up of a name that hangs.
  set(CURLOPT_QUICK_EXIT, 1L);
  const auto connecting = std::min<milliseconds>(request_.idleTimeout, std::chrono::hours(24));
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connecting.count()));
  set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request_.maxReply));
  set(CURLOPT_WRITEFUNCTION, &HttpTransfer::receive);
  set(CURLOPT_WRITEDATA, static_cast<void*>(this));
  set(CURLOPT_OPENSOCKETFUNCTION, &HttpTransfer::openSocket);
  set(CURLOPT_OPENSOCKETDATA, static_cast<void*>(this));
  // A proxy would look the name up itself, and nobody could tell where plain text goes.
  if (target_.scheme == HttpTarget::Scheme::http) set(CURLOPT_PROXY, "");
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
  set(CURLOPT_HTTPHEADER, headers_.get());
}

void HttpTransfer::setBody() {
  using Method = HttpRequest::Method;
  if (request_.method == Method::get) {
    set(CURLOPT_HTTPGET, 1L);
    return;
  }
  if (request_.method != Method::remove || !request_.body.empty()) {
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    set(CURLOPT_POSTFIELDS, request_.body.data());
  }
  if (request_.method == Method::patch) set(CURLOPT_CUSTOMREQUEST, "PATCH");
  if (request_.method == Method::remove) set(CURLOPT_CUSTOMREQUEST, "DELETE");
}

void HttpTransfer::setParts() {
  mime_.reset(curl_.curl_mime_init(easy_.get()));
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
  set(CURLOPT_MIMEPOST, mime_.get());
}

HttpResponse HttpTransfer::run(const std::stop_token& stop) {
  {
    const WithoutPipeSignal quiet;
    const std::stop_callback wake(stop, [this] { curl_.curl_multi_wakeup(multi_.get()); });
    perform(stop);
  }
  const CURLcode code = outcome();
  body_.throwIfUnwritten();
  if (body_.isTooLarge() || code == CURLE_FILESIZE_EXCEEDED)
    throw HttpError(Kind::tooLarge, fmt::format("{} 的回复超过了 {}，没有读完", target_.host,
                                                inWords(request_.maxReply)));
  if (code == CURLE_COULDNT_CONNECT && wasPublic_)
    throw HttpError(
        Kind::refused,
        fmt::format("{} 不在本机或局域网里，不加密的 http:// 不能用于它，请改用 https://",
                    target_.host));
  if (code != CURLE_OK)
    throw httpFailure(code, static_cast<int>(info<long>(CURLINFO_OS_ERRNO)), target_.host);
  return {static_cast<int>(info<long>(CURLINFO_RESPONSE_CODE)), body_.finished()};
}

void HttpTransfer::perform(const std::stop_token& stop) const {
  const Time begun = steady_clock::now();
  Time lastMoved = begun;
  curl_off_t moved = 0;
  for (;;) {
    throwIfStopped(stop);
    int running = 0;
    curl_.curl_multi_perform(multi_.get(), &running);
    if (running == 0) return;
    if (const curl_off_t count = bytesMoved(); count != moved) {
      moved = count;
      lastMoved = steady_clock::now();
    }
    const auto wait = std::min<milliseconds>(untilLimit(begun, lastMoved), std::chrono::hours(1));
    curl_.curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(wait.count()), nullptr);
  }
}

milliseconds HttpTransfer::untilLimit(Time begun, Time lastMoved) const {
  const Time now = steady_clock::now();
  if (now - begun >= request_.wholeTimeout)
    throw HttpError(Kind::timeout, fmt::format("{} 过了 {} 还没有回复完，请稍后重试", target_.host,
                                               inWords(request_.wholeTimeout)));
  if (now - lastMoved >= request_.idleTimeout)
    throw HttpError(Kind::timeout, fmt::format("{} 在 {} 内没有回应，请检查网络后重试",
                                               target_.host, inWords(request_.idleTimeout)));
  return std::chrono::ceil<milliseconds>(
      std::min(begun + request_.wholeTimeout, lastMoved + request_.idleTimeout) - now);
}

curl_off_t HttpTransfer::bytesMoved() const {
  return info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T) + info<curl_off_t>(CURLINFO_SIZE_DOWNLOAD_T) +
         info<long>(CURLINFO_REQUEST_SIZE) + info<long>(CURLINFO_HEADER_SIZE);
}

CURLcode HttpTransfer::outcome() const {
  int left = 0;
  while (const CURLMsg* const message = curl_.curl_multi_info_read(multi_.get(), &left))
    if (message->msg == CURLMSG_DONE) return message->data.result;
  return CURLE_OUT_OF_MEMORY;
}

std::size_t HttpTransfer::receive(const char* bytes, std::size_t size, std::size_t count,
                                  void* self) {
  const std::size_t length = size * count;
  return static_cast<HttpTransfer*>(self)->body_.take({bytes, length}) ? length : 0;
}

curl_socket_t HttpTransfer::openSocket(void* self, curlsocktype /*purpose*/,
                                       curl_sockaddr* address) {
  auto& transfer = *static_cast<HttpTransfer*>(self);
  if (transfer.target_.scheme == HttpTarget::Scheme::http && !isPrivateAddress(address->addr)) {
    transfer.wasPublic_ = true;
    return CURL_SOCKET_BAD;
  }
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

}  // namespace nomely
