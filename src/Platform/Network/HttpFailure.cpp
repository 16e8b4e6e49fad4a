#include "Platform/Network/HttpFailure.h"

#include <cerrno>

#include <fmt/format.h>

namespace nomely {
namespace {

using Kind = HttpError::Kind;

std::string connectionText(int osError, const std::string& host) {
  switch (osError) {
    case ECONNREFUSED:
      return fmt::format("{} 拒绝了连接，请确认那里的服务已启动", host);
    case ENETUNREACH:
    case EHOSTUNREACH:
      return fmt::format("到不了 {}，请检查网络是否已连接", host);
    default:
      return fmt::format("连不上 {}，请检查网络后重试", host);
  }
}

}  // namespace

HttpError httpFailure(CURLcode code, int osError, const std::string& host) {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
      return {Kind::connection, fmt::format("找不到主机 {}，请检查网络和地址后重试", host)};
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
      return {Kind::connection, "连不上代理服务器，请检查系统的代理设置"};
    case CURLE_COULDNT_CONNECT:
      return {Kind::connection, connectionText(osError, host)};
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
      return {Kind::connection,
              fmt::format("{} 的安全证书无法验证，为保护内容没有发送，请检查地址和系统时间", host)};
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CERTPROBLEM:
      return {Kind::connection,
              fmt::format("与 {} 建立加密连接失败，请检查地址，或稍后重试", host)};
    case CURLE_SSL_CACERT_BADFILE:
      return {Kind::connection,
              "读不了可信证书的文件，请检查环境变量 SSL_CERT_FILE，或安装 ca-certificates"};
    case CURLE_OPERATION_TIMEDOUT:
      return {Kind::timeout, fmt::format("连接 {} 超时，请检查网络后重试", host)};
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
      return {Kind::notHttp, fmt::format("{} 的回复不是 HTTP，请检查地址和端口", host)};
    case CURLE_READ_ERROR:
    case CURLE_ABORTED_BY_CALLBACK:
      return {Kind::connection, "要上传的文件读到一半出错，请检查文件后重试"};
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return {Kind::connection, fmt::format("与 {} 的连接中途断开，请重试", host)};
    default:
      return {Kind::connection,
              fmt::format("与 {} 通信失败（错误 {}），请稍后重试", host, static_cast<int>(code))};
  }
}

}  // namespace nomely
