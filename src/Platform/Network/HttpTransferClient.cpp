#include "Platform/Cancellation.h"
#include "Platform/Network/HttpTransfer.h"

namespace nomely {
namespace {

class HttpTransferClient final : public HttpClient {
 public:
  HttpResponse send(const HttpRequest& request, const std::stop_token& stop) override {
    throwIfStopped(stop);
    return HttpTransfer(request, HttpTarget::of(request.url)).run(stop);
  }
};

}  // namespace

std::unique_ptr<HttpClient> makeHttpClient() {
  return std::make_unique<HttpTransferClient>();
}

}  // namespace nomely
