#include "platform/mac/mac_http_session.h"

#include <algorithm>

#include "platform/mac/edge.h"
#include "platform/mac/http_transfers.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

// Lanes beyond share the sessions of others.
constexpr std::uint64_t kMostLanes = 8;

// Compared as the system understood it, which is what it would connect to.
bool leadsTo(NSURL* url, const HttpEndpoint& endpoint) {
  return [url.scheme isEqualToString:@"http"] &&
         [url.host isEqualToString:toNSString(endpoint.address)] &&
         url.port.longLongValue == endpoint.port && url.user == nil && url.password == nil;
}

NSURLSessionConfiguration* configuration(bool isPinned, double idle, double total) {
  NSURLSessionConfiguration* settings = [NSURLSessionConfiguration ephemeralSessionConfiguration];
  settings.timeoutIntervalForRequest = idle;
  if (total > 0) settings.timeoutIntervalForResource = total;
  settings.HTTPShouldSetCookies = NO;
  settings.HTTPCookieStorage = nil;
  settings.URLCache = nil;
  settings.URLCredentialStorage = nil;
  if (isPinned) settings.connectionProxyDictionary = [NSDictionary dictionary];  // none
  return settings;
}

NSURLRequest* toURLRequest(NSURL* url, const HttpRequest& request, double idleTimeout) {
  NSMutableURLRequest* made =
      [[NSMutableURLRequest alloc] initWithURL:url
                                   cachePolicy:NSURLRequestUseProtocolCachePolicy
                               timeoutInterval:std::min(request.idleTimeout, idleTimeout)];
  made.HTTPMethod = toNSString(request.method);
  if (!request.body.empty()) made.HTTPBody = toNSData(request.body);
  if (request.contentType) {
    [made setValue:toNSString(*request.contentType) forHTTPHeaderField:@"Content-Type"];
  }
  return made;
}

void failSoon(NSURLSession* session, const char* problem, bool diskIsFull,
              HttpCompletion completion) {
  [session.delegateQueue addOperationWithBlock:^{
    atEdge([&] { completion({std::nullopt, {}, problem, diskIsFull}); });
  }];
}

}  // namespace

MacHttpSession::~MacHttpSession() {
  for (auto& [key, channel] : channels_) [channel.session invalidateAndCancel];
}

MacHttpSession::Channel MacHttpSession::makeChannel(bool isPinned, double totalTimeout) const {
  TorvaneTransfers* transfers = [[TorvaneTransfers alloc] initFollowingRedirects:!isPinned];
  NSURLSession* session =
      [NSURLSession sessionWithConfiguration:configuration(isPinned, idleTimeout_, totalTimeout)
                                    delegate:transfers
                               delegateQueue:nil];
  return {session, transfers};
}

MacHttpSession::Channel& MacHttpSession::channelFor(const HttpRequest& request) {
  const ChannelKey key{request.onlyEndpoint.has_value(), request.saveTo.has_value(),
                       request.totalTimeout, request.lane % kMostLanes};
  const auto known = channels_.find(key);
  if (known != channels_.end()) return known->second;
  return channels_.emplace(key, makeChannel(std::get<0>(key), std::get<2>(key))).first->second;
}

void MacHttpSession::dataTask(HttpRequest request, HttpCompletion completion) {
  Channel& channel = channelFor(request);
  NSURL* url = [NSURL URLWithString:toNSString(request.url)];
  if (url == nil || (request.onlyEndpoint && !leadsTo(url, *request.onlyEndpoint))) {
    failSoon(channel.session, "Could not connect to the server.", false, std::move(completion));
    return;
  }
  std::unique_ptr<BodyFile> file;
  if (request.saveTo) {
    file = BodyFile::create(*request.saveTo);
    if (!file) {
      const bool diskIsFull = isDiskFull(errno);
      failSoon(channel.session, "The file cannot be saved.", diskIsFull, std::move(completion));
      return;
    }
  }
  NSURLSessionDataTask* task =
      [channel.session dataTaskWithRequest:toURLRequest(url, request, idleTimeout_)];
  [channel.transfers expectTask:task
                       maxBytes:request.maxResponseBytes
                         saveTo:std::move(file)
                     completion:std::move(completion)];
  [task resume];
}

}  // namespace torvane
