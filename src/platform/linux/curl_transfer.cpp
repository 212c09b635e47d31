#include "platform/linux/curl_transfer.h"

#include <algorithm>

#include "platform/linux/http_text.h"

namespace torvane {
namespace {

constexpr long kMostRedirects = 10;
constexpr std::size_t kLongestUrlKept = 1024;

template <typename Value>
void set(CURL* handle, CURLoption option, Value value) {
  curl_easy_setopt(handle, option, value);
}

// RFC 9110, section 9.2.2: only these may be sent a second time without asking.
bool isIdempotent(std::string_view method) {
  constexpr std::array<std::string_view, 6> kMethods{"GET",    "HEAD",    "PUT",
                                                     "DELETE", "OPTIONS", "TRACE"};
  return std::find(kMethods.begin(), kMethods.end(), method) != kMethods.end();
}

// RFC 9110, section 8.6: some say that their body is empty.
bool hasBody(const HttpRequest& request) {
  const std::string& method = request.method;
  return !request.body.empty() || method == "POST" || method == "PUT" || method == "PATCH";
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

}  // namespace

CurlTransfer::CurlTransfer() : handle_(curl_easy_init()) {
  // A header without a value is one that libcurl is not to add by itself.
  bareHeaders_ = curl_slist_append(nullptr, "Expect:");
  bareHeaders_ = curl_slist_append(bareHeaders_, "Content-Type:");
}

CurlTransfer::~CurlTransfer() {
  curl_easy_cleanup(handle_);
  curl_slist_free_all(headers_);
  curl_slist_free_all(bareHeaders_);
}

std::optional<std::string> CurlTransfer::prepare(HttpJob job) {
  job_ = std::move(job);
  const HttpRequest& request = job_.request;
  if (!isHttpToken(request.method)) return "The request's method is not an HTTP method.";
  if (request.contentType && !isHeaderValue(*request.contentType)) {
    return "The request's content type holds control characters.";
  }
  if (auto problem = aim()) return problem;
  if (request.saveTo) file_ = BodyFile::create(*request.saveTo);
  if (request.saveTo && !file_) return cannotSave();
  errorText_.front() = '\0';
  setUp();
  set(handle_, CURLOPT_CURLU, url_.get());
  return std::nullopt;
}

// A request like the one before needs neither this nor what follows: polling the engine would spend
// a sixth of its time on them.
std::optional<std::string> CurlTransfer::aim() {
  const HttpRequest& request = job_.request;
  const bool isAsBefore = url_ && request.url == target_.url;
  if (isAsBefore && request.onlyEndpoint == target_.onlyEndpoint) return std::nullopt;
  ParsedUrl parsed = parseUrl(request.url, request.onlyEndpoint);
  url_ = std::move(parsed.url);
  if (!url_) return std::move(parsed.problem);
  target_ = {request.url, request.onlyEndpoint};
  isSecure_ = parsed.isSecure;
  return std::nullopt;
}

void CurlTransfer::setUp() {
  const HttpRequest& request = job_.request;
  std::optional<Setup> setup;
  if (!hasBody(request) && !request.contentType) {
    setup = Setup{request.method, request.onlyEndpoint.has_value(), isSecure_};
  }
  if (setup && setup == setup_) return;
  setup_ = std::move(setup);
  curl_easy_reset(handle_);
  setTarget();
  setMessage();
  setHeaders();
  setCallbacks();
}

void CurlTransfer::setTarget() {
  set(handle_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  set(handle_, CURLOPT_TCP_NODELAY, 1L);
  set(handle_, CURLOPT_NOSIGNAL, 1L);
  set(handle_, CURLOPT_QUICK_EXIT, 1L);  // a name that is still looked up holds nobody up
  if (job_.request.onlyEndpoint) {
    set(handle_, CURLOPT_PROTOCOLS_STR, "http");
    set(handle_, CURLOPT_PROXY, "");
    set(handle_, CURLOPT_NOPROXY, "*");
    return;
  }
  set(handle_, CURLOPT_PROTOCOLS_STR, "http,https");
  set(handle_, CURLOPT_REDIR_PROTOCOLS_STR, isSecure_ ? "https" : "http,https");
  set(handle_, CURLOPT_FOLLOWLOCATION, 1L);
  set(handle_, CURLOPT_MAXREDIRS, kMostRedirects);
}

void CurlTransfer::setMessage() {
  const HttpRequest& request = job_.request;
  if (hasBody(request)) {
    set(handle_, CURLOPT_POST, 1L);
    set(handle_, CURLOPT_POSTFIELDS, reinterpret_cast<const char*>(request.body.data()));
    set(handle_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    if (request.method != "POST") set(handle_, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  } else if (request.method == "HEAD") {
    set(handle_, CURLOPT_NOBODY, 1L);  // else libcurl waits for a body that will not come
  } else if (request.method != "GET") {
    set(handle_, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  }
}

void CurlTransfer::setHeaders() {
  const auto& type = job_.request.contentType;
  if (type) {
    // libcurl's way to write a header without a value is a semicolon.
    const std::string line = isBlank(*type) ? "Content-Type;" : "Content-Type: " + *type;
    headers_ = curl_slist_append(nullptr, line.c_str());
    headers_ = curl_slist_append(headers_, "Expect:");
    set(handle_, CURLOPT_HTTPHEADER, headers_);
  } else if (hasBody(job_.request)) {
    set(handle_, CURLOPT_HTTPHEADER, bareHeaders_);
  }
}

void CurlTransfer::setCallbacks() {
  set(handle_, CURLOPT_PRIVATE, this);
  set(handle_, CURLOPT_ERRORBUFFER, errorText_.data());
  set(handle_, CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
  set(handle_, CURLOPT_HEADERDATA, this);
  set(handle_, CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
  set(handle_, CURLOPT_WRITEDATA, this);
  set(handle_, CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::onOpenSocket);
  set(handle_, CURLOPT_OPENSOCKETDATA, this);
  if (!isIdempotent(job_.request.method)) {
    set(handle_, CURLOPT_PREREQFUNCTION, &CurlTransfer::onRequest);
    set(handle_, CURLOPT_PREREQDATA, this);
  }
  if (hasBody(job_.request)) {
    set(handle_, CURLOPT_NOPROGRESS, 0L);
    set(handle_, CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
    set(handle_, CURLOPT_XFERINFODATA, this);
  }
}

// libcurl sends a HEAD either without its body, or as a method that it does not know and to which
// it would wait for a body.
bool CurlTransfer::endsWithHeader() const {
  return job_.request.method == "HEAD" && hasBody(job_.request);
}

HttpResult CurlTransfer::result(CURLcode code) {
  const bool isComplete = code == CURLE_OK || (hasHeader_ && endsWithHeader());
  if (!isComplete) {
    if (!problem_.empty()) return failure(std::move(problem_));
    const bool hasText = errorText_.front() != '\0';
    return failure(asSentence(hasText ? errorText_.data() : curl_easy_strerror(code)));
  }
  // A connection that closes between two header lines is a success to libcurl.
  if (!hasHeader_) return failure(kConnectionLost);
  if (file_ && !file_->keep()) return failure(cannotSave());
  HttpResult result = described();
  result.body = std::move(body_);
  return result;
}

HttpResult CurlTransfer::failure(std::string error) {
  HttpResult result = described();
  result.error = std::move(error);
  result.diskIsFull = diskIsFull_;
  return result;
}

HttpResult CurlTransfer::described() const {
  HttpResult result;
  if (!hasHeader_) return result;
  long status = 0;
  const char* contentType = nullptr;
  curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(handle_, CURLINFO_CONTENT_TYPE, &contentType);
  result.response = HttpResponse{static_cast<int>(status), std::nullopt};
  if (contentType != nullptr) result.response->contentType = utf8FromHeader(contentType);
  return result;
}

std::string CurlTransfer::cannotSave() {
  diskIsFull_ = isDiskFull(errno);
  return kCannotSave;
}

HttpCompletion CurlTransfer::release() {
  HttpCompletion completion = std::move(job_.completion);
  job_ = {};
  if (target_.url.size() > kLongestUrlKept) {
    target_ = {};
    url_.reset();
  }
  curl_slist_free_all(headers_);
  headers_ = nullptr;
  body_ = {};
  file_.reset();
  received_ = 0;
  uploaded_ = 0;
  requestsSent_ = 0;
  hasHeader_ = false;
  diskIsFull_ = false;
  problem_.clear();
  return completion;
}

}  // namespace torvane
