#include "platform/linux/curl_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>

#include "platform/linux/http_text.h"

namespace torvane {
namespace {

std::string part(const CurlUrl& url, CURLUPart which, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url.get(), which, &text, flags) != CURLUE_OK) return {};
  std::string result(text);
  curl_free(text);
  return result;
}

ParsedUrl refused(std::string problem) {
  ParsedUrl parsed;
  parsed.problem = std::move(problem);
  return parsed;
}

std::string hostInUrl(const HttpEndpoint& endpoint) {
  const bool isVersion6 = endpoint.address.find(':') != std::string::npos;
  return isVersion6 ? "[" + endpoint.address + "]" : endpoint.address;
}

bool leadsTo(const CurlUrl& url, const HttpEndpoint& endpoint) {
  return part(url, CURLUPART_SCHEME) == "http" &&
         part(url, CURLUPART_HOST) == hostInUrl(endpoint) &&
         part(url, CURLUPART_PORT, CURLU_DEFAULT_PORT) == std::to_string(endpoint.port);
}

template <typename Address, typename Field>
bool isAddress(const sockaddr& given, int family, const HttpEndpoint& endpoint,
               Field Address::*field, in_port_t Address::*port) {
  Address address{};
  std::memcpy(&address, &given, sizeof address);
  Field wanted{};
  return ::inet_pton(family, endpoint.address.c_str(), &wanted) == 1 &&
         std::memcmp(&(address.*field), &wanted, sizeof wanted) == 0 &&
         address.*port == htons(endpoint.port);
}

}  // namespace

ParsedUrl parseUrl(const std::string& text, const std::optional<HttpEndpoint>& onlyEndpoint) {
  // libcurl sees C strings; a URL cut short would be another one.
  const bool hasControls = !isHeaderValue(text) || text.find('\t') != std::string::npos;
  if (hasControls) return refused("The address holds control characters.");
  ParsedUrl parsed{CurlUrl(curl_url()), false, {}};
  // The path goes out as it was given, with any "..".
  const unsigned flags = CURLU_PATH_AS_IS | (onlyEndpoint ? CURLU_DISALLOW_USER : 0U);
  const CURLUcode code = curl_url_set(parsed.url.get(), CURLUPART_URL, text.c_str(), flags);
  if (code != CURLUE_OK) return refused(asSentence(curl_url_strerror(code)));
  if (onlyEndpoint && !leadsTo(parsed.url, *onlyEndpoint)) {
    return refused("Could not connect: the address leads away from " + hostInUrl(*onlyEndpoint) +
                   ":" + std::to_string(onlyEndpoint->port) + ".");
  }
  parsed.isSecure = part(parsed.url, CURLUPART_SCHEME) == "https";
  return parsed;
}

bool isEndpoint(const sockaddr& address, const HttpEndpoint& endpoint) {
  switch (address.sa_family) {
    case AF_INET:
      return isAddress(address, AF_INET, endpoint, &sockaddr_in::sin_addr, &sockaddr_in::sin_port);
    case AF_INET6:
      return isAddress(address, AF_INET6, endpoint, &sockaddr_in6::sin6_addr,
                       &sockaddr_in6::sin6_port);
    default:
      return false;
  }
}

}  // namespace torvane
