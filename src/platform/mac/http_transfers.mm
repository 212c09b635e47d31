#include "platform/mac/http_transfers.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/mac/edge.h"
#include "platform/mac/mac_text.h"

namespace {

struct Transfer {
  torvane::HttpCompletion completion;
  std::uint64_t maxBytes = 0;
  std::unique_ptr<torvane::BodyFile> file;  // for the body; none: it goes into the result
  std::uint64_t received = 0;
  torvane::HttpResult result;

  [[nodiscard]] bool take(torvane::ByteView bytes) {
    if (file) return file->write(bytes);
    result.body.insert(result.body.end(), bytes.begin(), bytes.end());
    return true;
  }

  [[nodiscard]] bool isTooLong(std::uint64_t bytes) const {
    return maxBytes != 0 && bytes > maxBytes;
  }
};

torvane::HttpResponse described(NSHTTPURLResponse* response) {
  torvane::HttpResponse described;
  described.status = static_cast<int>(response.statusCode);
  NSString* type = [response valueForHTTPHeaderField:@"Content-Type"];
  if (type != nil) described.contentType = torvane::toText(type);
  return described;
}

}  // namespace

@interface TorvaneTransfers ()
- (Transfer*)transferOf:(NSURLSessionTask*)task;
- (void)task:(NSURLSessionTask*)task isTooLong:(Transfer*)transfer;
@end

@implementation TorvaneTransfers {
  BOOL _followsRedirects;
  std::mutex _mutex;                          // tasks begin on the main thread
  std::map<NSUInteger, Transfer> _transfers;  // by the task's identifier
}

- (instancetype)initFollowingRedirects:(BOOL)followsRedirects {
  self = [super init];
  if (self != nil) _followsRedirects = followsRedirects;
  return self;
}

- (void)expectTask:(NSURLSessionTask*)task
          maxBytes:(std::uint64_t)maxBytes
            saveTo:(std::unique_ptr<torvane::BodyFile>)file
        completion:(torvane::HttpCompletion)completion {
  const std::lock_guard lock(_mutex);
  _transfers[task.taskIdentifier] = {std::move(completion), maxBytes, std::move(file), 0, {}};
}

// Stays where it is until the task's end, which the same queue reports after everything else.
- (Transfer*)transferOf:(NSURLSessionTask*)task {
  const std::lock_guard lock(_mutex);
  const auto found = _transfers.find(task.taskIdentifier);
  return found != _transfers.end() ? &found->second : nullptr;
}

- (void)task:(NSURLSessionTask*)task isTooLong:(Transfer*)transfer {
  transfer->result = {.response = std::nullopt, .body = {}, .error = "The response is too long."};
  [task cancel];
}

- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)dataTask
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition disposition))completionHandler {
  static_cast<void>(session);
  torvane::atEdge([&] {
    Transfer* transfer = [self transferOf:dataTask];
    if (transfer == nullptr || ![response isKindOfClass:[NSHTTPURLResponse class]]) return;
    transfer->result.response = described((NSHTTPURLResponse*)response);
    const long long length = response.expectedContentLength;
    if (length > 0 && transfer->isTooLong(static_cast<std::uint64_t>(length))) {
      [self task:dataTask isTooLong:transfer];
    }
  });
  completionHandler(NSURLSessionResponseAllow);
}

- (void)URLSession:(NSURLSession*)session
          dataTask:(NSURLSessionDataTask*)dataTask
    didReceiveData:(NSData*)data {
  static_cast<void>(session);
  torvane::atEdge([&] {
    Transfer* transfer = [self transferOf:dataTask];
    if (transfer == nullptr || transfer->result.error) return;
    transfer->received += data.length;
    if (transfer->isTooLong(transfer->received)) {
      [self task:dataTask isTooLong:transfer];
    } else if (!transfer->take({static_cast<const std::uint8_t*>(data.bytes), data.length})) {
      transfer->result.diskIsFull = torvane::isDiskFull(errno);
      transfer->result.error = "The file cannot be saved.";
      [dataTask cancel];
    }
  });
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest* newRequest))completionHandler {
  static_cast<void>(session);
  static_cast<void>(task);
  static_cast<void>(response);
  // What was asked for with encryption is not taken without it.
  const BOOL isSecure = [request.URL.scheme isEqualToString:@"https"];
  completionHandler(_followsRedirects && isSecure ? request : nil);
}

- (void)URLSession:(NSURLSession*)session
                    task:(NSURLSessionTask*)task
    didCompleteWithError:(NSError*)error {
  static_cast<void>(session);
  torvane::atEdge([&] {
    std::map<NSUInteger, Transfer>::node_type ended;
    {
      const std::lock_guard lock(_mutex);
      ended = _transfers.extract(task.taskIdentifier);
    }
    if (ended.empty()) return;
    torvane::HttpResult& result = ended.mapped().result;
    if (error != nil && !result.error) result.error = torvane::toText(error.localizedDescription);
    const auto& file = ended.mapped().file;
    if (!result.error && file && !file->keep()) {
      result.diskIsFull = torvane::isDiskFull(errno);
      result.error = "The file cannot be saved.";
    }
    if (result.error) result.body.clear();
    ended.mapped().file.reset();  // removes what is not kept, before anybody looks
    ended.mapped().completion(std::move(result));
  });
}

@end
