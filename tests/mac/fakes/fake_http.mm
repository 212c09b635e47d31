// URL sessions whose answers the test gives.

#include <cstdlib>

#include "mac/fakes/fake_system.h"

@interface NSURL () {
 @public
  std::string _text;
}
@end
@implementation NSURL
+ (instancetype)URLWithString:(NSString*)string {
  NSURL* url = [[NSURL alloc] init];
  url->_text = fake::text(string);
  return url->_text.find(':') != std::string::npos ? url : nil;
}
+ (NSURL*)fileURLWithPath:(NSString*)path {
  NSURL* url = [[NSURL alloc] init];
  url->_text = "file://" + fake::text(path);
  return url;
}
- (NSString*)path {
  return fake::string(_text.substr(_text.find('/', _text.find("://") + 3)));
}
- (std::string)authority {
  const auto from = _text.find("://") + 3;
  return _text.substr(from, _text.find_first_of("/?#", from) - from);
}
- (NSString*)scheme {
  return fake::string(_text.substr(0, _text.find("://")));
}
- (NSString*)user {
  const auto at = [self authority].find('@');
  return at != std::string::npos ? fake::string([self authority].substr(0, at)) : nil;
}
- (NSString*)password {
  return nil;
}
- (NSString*)host {
  auto rest = [self authority];
  rest = rest.substr(rest.find('@') + 1);
  return fake::string(rest.substr(0, rest.find(':')));
}
- (NSNumber*)port {
  auto rest = [self authority];
  rest = rest.substr(rest.find('@') + 1);
  const auto colon = rest.find(':');
  if (colon == std::string::npos) return nil;
  return [NSNumber numberWithInt:std::atoi(rest.c_str() + colon + 1)];
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  return [[NSWorkspace alloc] init];
}
- (BOOL)openURL:(NSURL*)url {
  fake::say("open " + url->_text);
  return YES;
}
@end

@implementation NSFileManager
+ (NSFileManager*)defaultManager {
  return [[NSFileManager alloc] init];
}
- (BOOL)trashItemAtURL:(NSURL*)url resultingItemURL:(NSURL**)result error:(NSError**)error {
  fake::say("trash " + url->_text);
  return !fake::system().trashFails;
}
@end

@interface NSRunningApplication () {
 @public
  int _identifier;
}
@end
@implementation NSRunningApplication
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  NSMutableArray* running = [NSMutableArray array];
  for (const auto& application : fake::system().runningApplications) {
    NSRunningApplication* made = [[NSRunningApplication alloc] init];
    made->_identifier = application.first;
    [running addObject:made];
  }
  return running;
}
+ (instancetype)runningApplicationWithProcessIdentifier:(int)identifier {
  NSRunningApplication* made = [[NSRunningApplication alloc] init];
  made->_identifier = identifier;
  return made;
}
- (int)processIdentifier {
  return _identifier;
}
- (NSURL*)bundleURL {
  return [NSURL fileURLWithPath:fake::string(fake::system().runningApplications[_identifier])];
}
- (BOOL)forceTerminate {
  fake::say("force " + std::to_string(_identifier));
  return YES;
}
@end

@implementation SMAppService
+ (SMAppService*)mainAppService {
  return [[SMAppService alloc] init];
}
- (SMAppServiceStatus)status {
  return fake::system().loginStatus;
}
- (BOOL)registerAndReturnError:(NSError**)error {
  fake::say("register");
  if (fake::system().loginFails) *error = fake::error("Not today.");
  return !fake::system().loginFails;
}
- (BOOL)unregisterAndReturnError:(NSError**)error {
  fake::say("unregister");
  return YES;
}
@end

@interface NSURLRequest () {
 @public
  fake::Request _made;
}
@end
@implementation NSURLRequest
- (instancetype)initWithURL:(NSURL*)url
                cachePolicy:(NSURLRequestCachePolicy)policy
            timeoutInterval:(NSTimeInterval)timeout {
  _made.url = url->_text;
  _made.timeout = timeout;
  return self;
}
- (NSURL*)URL {
  return [NSURL URLWithString:fake::string(_made.url)];
}
@end
@implementation NSMutableURLRequest
- (void)setHTTPMethod:(NSString*)method {
  _made.method = fake::text(method);
}
- (NSString*)HTTPMethod {
  return fake::string(_made.method);
}
- (void)setHTTPBody:(NSData*)body {
  _made.body.assign((const char*)body.bytes, body.length);
}
- (NSData*)HTTPBody {
  return nil;
}
- (void)setValue:(NSString*)value forHTTPHeaderField:(NSString*)field {
  _made.headers[fake::text(field)] = fake::text(value);
}
@end

@interface NSURLResponse () {
 @public
  long long _length;
}
@end
@implementation NSURLResponse
- (long long)expectedContentLength {
  return _length;
}
@end
@interface NSHTTPURLResponse () {
 @public
  int _status;
  std::string _type;
}
@end
@implementation NSHTTPURLResponse
- (NSInteger)statusCode {
  return _status;
}
- (NSString*)valueForHTTPHeaderField:(NSString*)field {
  return _type.empty() || fake::text(field) != "Content-Type" ? nil : fake::string(_type);
}
@end

@implementation NSURLSessionConfiguration
+ (NSURLSessionConfiguration*)ephemeralSessionConfiguration {
  return [[NSURLSessionConfiguration alloc] init];
}
@end

@interface NSURLSession () {
 @public
  id _events;
  NSOperationQueue* _queue;
  NSUInteger _tasks;
}
@end
@interface NSURLSessionTask () {
 @public
  fake::Request _asked;
  NSUInteger _number;
  BOOL _isCancelled;
  BOOL _hasEnded;
}
@end
@implementation NSURLSessionTask
- (NSUInteger)taskIdentifier {
  return _number;
}
- (void)resume {
  fake::Request request = _asked;
  request.task = (NSURLSessionDataTask*)self;
  fake::say(request.method + " " + request.url);
  fake::system().requests.push_back(request);
}
- (void)cancel {
  fake::say("task cancelled");
  _isCancelled = YES;
}
@end
@implementation NSURLSessionDataTask
@end
@implementation NSURLSession
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)settings
                                 delegate:(id<NSURLSessionDelegate>)delegate
                            delegateQueue:(NSOperationQueue*)queue {
  const bool direct = settings.connectionProxyDictionary != nil;
  const bool keepsNothing = settings.HTTPCookieStorage == nil && settings.URLCache == nil &&
                            settings.URLCredentialStorage == nil && !settings.HTTPShouldSetCookies;
  fake::say("session" + std::string(direct ? " direct" : "") +
            (keepsNothing ? " keeps nothing" : "") + " idle " +
            std::to_string((int)settings.timeoutIntervalForRequest) + " total " +
            std::to_string((int)settings.timeoutIntervalForResource));
  NSURLSession* session = [[NSURLSession alloc] init];
  session->_events = delegate;
  session->_queue = [[NSOperationQueue alloc] init];
  return session;
}
- (NSOperationQueue*)delegateQueue {
  return _queue;
}
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request {
  NSURLSessionDataTask* task = [[NSURLSessionDataTask alloc] init];
  task->_asked = request->_made;
  task->_asked.session = self;
  task->_number = ++_tasks;
  return task;
}
// What is on its way ends with an error; then the session lets go of its delegate.
- (void)invalidateAndCancel {
  fake::say("session cancelled");
  for (const auto& request : fake::system().requests) {
    if (request.session == self && !request.task->_hasEnded) fake::fail(request, "cancelled");
  }
  _events = nil;
}
@end

namespace fake {

static void answer(const Request& request, int status, const std::string& type,
                   const std::string& body, long long announced) {
  id<NSURLSessionDataDelegate> events = request.session->_events;
  request.task->_hasEnded = YES;
  elsewhere([&] {
    NSHTTPURLResponse* response = [[NSHTTPURLResponse alloc] init];
    response->_status = status;
    response->_type = type;
    response->_length = announced;
    [events URLSession:request.session
                  dataTask:request.task
        didReceiveResponse:response
         completionHandler:^(NSURLSessionResponseDisposition disposition) {
           if (disposition != NSURLSessionResponseAllow) say("answer refused");
         }];
    const auto half = body.size() / 2;
    for (const auto& part : {body.substr(0, half), body.substr(half)}) {
      if (request.task->_isCancelled) break;
      [events URLSession:request.session
                dataTask:request.task
          didReceiveData:[NSData dataWithBytes:part.data() length:part.size()]];
    }
    NSError* failure = request.task->_isCancelled ? error("cancelled") : nil;
    [events URLSession:request.session task:request.task didCompleteWithError:failure];
  });
}

void respond(const Request& request, int status, const std::string& type, const std::string& body) {
  answer(request, status, type, body, (long long)body.size());
}

void respond(const Request& request, int status, const std::string& body, long long announced) {
  answer(request, status, "", body, announced);
}

bool followsRedirect(const Request& request, const std::string& url) {
  id<NSURLSessionDataDelegate> events = request.session->_events;
  bool follows = false;
  elsewhere([&] {
    NSMutableURLRequest* next =
        [[NSMutableURLRequest alloc] initWithURL:[NSURL URLWithString:string(url)]
                                     cachePolicy:NSURLRequestUseProtocolCachePolicy
                                 timeoutInterval:1];
    bool* answer = &follows;
    [events URLSession:request.session
                              task:request.task
        willPerformHTTPRedirection:[[NSHTTPURLResponse alloc] init]
                        newRequest:next
                 completionHandler:^(NSURLRequest* allowed) {
                   *answer = allowed != nil;
                 }];
  });
  return follows;
}

void fail(const Request& request, const std::string& description) {
  id<NSURLSessionDataDelegate> events = request.session->_events;
  request.task->_hasEnded = YES;
  elsewhere([&] {
    [events URLSession:request.session task:request.task didCompleteWithError:error(description)];
  });
}

}  // namespace fake
