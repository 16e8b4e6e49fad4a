#include "Platform/Network/HttpTarget.h"

#include <memory>

#include "Platform/Network/Curl.h"
#include "Platform/Network/HttpClient.h"

namespace nomely {
namespace {

std::string part(const Curl& curl, CURLU* url, CURLUPart which) {
  char* text = nullptr;
  if (curl.curl_url_get(url, which, &text, 0) != CURLUE_OK) return {};
  std::string copy = text;
  curl.curl_free(text);
  return copy;
}

}  // namespace

HttpTarget HttpTarget::of(const std::string& url) {
  const Curl& curl = Curl::loaded();
  const std::unique_ptr<CURLU, decltype(&::curl_url_cleanup)> parsed(curl.curl_url(),
                                                                     curl.curl_url_cleanup);
  const CURLUcode code = curl.curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0);
  if (code != CURLUE_OK && code != CURLUE_BAD_SCHEME && code != CURLUE_UNSUPPORTED_SCHEME)
    throw HttpError(HttpError::Kind::badURL, "网址的写法不对，请检查设置里的地址");
  const std::string scheme = part(curl, parsed.get(), CURLUPART_SCHEME);
  if (code != CURLUE_OK || (scheme != "https" && scheme != "http"))
    throw HttpError(HttpError::Kind::refused, "网址要以 https:// 开头，请在设置里写出完整的地址");
  const std::string port = part(curl, parsed.get(), CURLUPART_PORT);
  std::string host = part(curl, parsed.get(), CURLUPART_HOST);
  if (!port.empty()) host += ":" + port;
  std::string path = part(curl, parsed.get(), CURLUPART_PATH);
  const std::string query = part(curl, parsed.get(), CURLUPART_QUERY);
  if (!query.empty()) path += "?" + query;
  return {scheme == "https" ? Scheme::https : Scheme::http, std::move(host), std::move(path)};
}

}  // namespace nomely
