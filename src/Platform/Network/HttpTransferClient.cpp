#include "Platform/Cancellation.h"
#include "Platform/Network/HttpTransfer.h"

namespace nomely {
namespace {

class HttpTransferClient final : public HttpClient {
 public:
  explicit HttpTransferClient(NetworkOptions options) : options_(std::move(options)) {}

  HttpResponse send(const HttpRequest& request, const std::stop_token& stop) override {
    throwIfStopped(stop);
    return HttpTransfer(request, HttpTarget::of(request.url), options_).run(stop);
  }

 private:
  const NetworkOptions options_;
};

}  // namespace

std::unique_ptr<HttpClient> makeHttpClient(const NetworkOptions& options) {
  return std::make_unique<HttpTransferClient>(options);
}

}  // namespace nomely
