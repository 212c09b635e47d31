// What libcurl calls while a transfer is under way.

#include <sys/socket.h>

#include <algorithm>

#include "platform/linux/curl_transfer.h"

namespace torvane {
namespace {

constexpr std::uint64_t kMostReserved = 1024 * 1024;

CurlTransfer* transfer(void* self) {
  return static_cast<CurlTransfer*>(self);
}

bool isInterim(long status) {
  return status >= 100 && status < 200 && status != 101;
}

}  // namespace

std::size_t CurlTransfer::onHeader(char* data, std::size_t size, std::size_t count, void* self) {
  CurlTransfer& of = *transfer(self);
  of.receiveHeader({data, size * count});
  return of.hasHeader_ && of.endsWithHeader() ? 0 : size * count;
}

void CurlTransfer::receiveHeader(std::string_view line) {
  noteProgress();
  if (line.starts_with("HTTP/")) hasHeader_ = false;  // of an interim response or a redirect
  if (line != "\r\n" && line != "\n") return;
  long status = 0;
  curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
  hasHeader_ = !isInterim(status);
}

std::size_t CurlTransfer::onBody(char* data, std::size_t size, std::size_t count, void* self) {
  const ByteView bytes = asBytes({data, size * count});
  return transfer(self)->receiveBody(bytes) ? bytes.size() : 0;
}

bool CurlTransfer::receiveBody(ByteView bytes) {
  noteProgress();
  std::uint64_t expected = received_ + bytes.size();
  if (received_ == 0) {
    curl_off_t announced = -1;
    curl_easy_getinfo(handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (announced > 0) expected = std::max(expected, static_cast<std::uint64_t>(announced));
    if (!file_) body_.reserve(std::min(expected, kMostReserved));
  }
  const std::uint64_t most = job_.request.maxResponseBytes;
  if (most > 0 && expected > most) {
    problem_ = "The response is longer than " + std::to_string(most) + " bytes.";
    hasHeader_ = false;  // nothing of it is passed on
    return false;
  }
  received_ += bytes.size();
  if (!file_) {
    body_.insert(body_.end(), bytes.begin(), bytes.end());
    return true;
  }
  if (file_->write(bytes)) return true;
  problem_ = cannotSave();
  return false;
}

int CurlTransfer::onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t uploaded) {
  CurlTransfer& to = *transfer(self);
  if (uploaded != to.uploaded_) to.noteProgress();
  to.uploaded_ = uploaded;
  return 0;
}

// libcurl sends a request again when a connection that it used before turns out to be closed. The
// server may have acted on the first: a second "next slide" would be one too many.
int CurlTransfer::onRequest(void* self, char*, char*, int, int) {
  CurlTransfer& of = *transfer(self);
  long redirects = 0;
  curl_easy_getinfo(of.handle_, CURLINFO_REDIRECT_COUNT, &redirects);
  if (++of.requestsSent_ <= redirects + 1) return CURL_PREREQFUNC_OK;
  of.problem_ = kConnectionLost;
  return CURL_PREREQFUNC_ABORT;
}

curl_socket_t CurlTransfer::onOpenSocket(void* self, curlsocktype, curl_sockaddr* address) {
  const auto& only = transfer(self)->job_.request.onlyEndpoint;
  if (only && !isEndpoint(address->addr, *only)) return CURL_SOCKET_BAD;
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

}  // namespace torvane
