#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc/objc.h>
#include <stddef.h>
#include <stdint.h>

#define NS_ENUM(Type, Name) \
  enum Name : Type Name;    \
  enum Name : Type
#define NS_OPTIONS(Type, Name) \
  typedef Type Name;           \
  enum __attribute__((flag_enum)) : Type
#define NS_RETURNS_INNER_POINTER __attribute__((objc_returns_inner_pointer))

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

@class NSMethodSignature, NSInvocation, NSString, NSURL;

_Pragma("clang assume_nonnull begin")

    @protocol NSObject
- (BOOL)isEqual:(nullable id)object;
@property(readonly) NSUInteger hash;
- (BOOL)isKindOfClass:(Class)aClass;
- (BOOL)respondsToSelector:(SEL)aSelector;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
- (instancetype)init;
+ (Class)class;
- (id)copy;
- (void)dealloc;
@end

@protocol NSCopying
@end

typedef struct {
  unsigned long state;
  id __unsafe_unretained _Nullable* _Nullable itemsPtr;
  unsigned long* _Nullable mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)len;
@end

// Values

@interface NSData : NSObject
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes NS_RETURNS_INNER_POINTER;
+ (instancetype)dataWithBytes:(nullable const void*)bytes length:(NSUInteger)length;
@end

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)len
                              encoding:(NSStringEncoding)encoding;
- (nullable NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy;
- (BOOL)isEqualToString:(NSString*)aString;
@end

// What the compiler makes of a text in the source.
@interface NSSimpleCString : NSString
@end
@interface NSConstantString : NSSimpleCString
@end

@interface NSValue : NSObject <NSCopying>
@end

@interface NSNumber : NSValue
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithUnsignedLongLong:(unsigned long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
@property(readonly) BOOL boolValue;
@property(readonly) long long longLongValue;
@property(readonly) unsigned long long unsignedLongLongValue;
@property(readonly) double doubleValue;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
- (BOOL)containsObject:(ObjectType)anObject;
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                           count:(NSUInteger)cnt;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)array;
- (void)addObject:(ObjectType)anObject;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
- (nullable ObjectType)objectForKey:(KeyType)aKey;
+ (instancetype)dictionary;
+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                              forKeys:(const KeyType<NSCopying> _Nonnull[_Nullable])keys
                                count:(NSUInteger)cnt;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
- (void)setObject:(ObjectType)anObject forKey:(KeyType<NSCopying>)aKey;
@end

@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSNotification : NSObject
@end

// The process and its computer

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundlePath;
@property(nullable, readonly, copy) NSString* executablePath;
@property(nullable, readonly, copy) NSDictionary<NSString*, id>* infoDictionary;
- (nullable NSString*)pathForResource:(nullable NSString*)name ofType:(nullable NSString*)ext;
@end

@interface NSFileHandle : NSObject
+ (nullable instancetype)fileHandleForReadingAtPath:(NSString*)path;
@end

@interface NSHost : NSObject
+ (instancetype)currentHost;
@property(nullable, readonly, copy) NSString* localizedName;
@end

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly, copy) NSDictionary<NSString*, NSString*>* environment;
@property(readonly) int processIdentifier;
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)defaultName;
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
- (void)removeObjectForKey:(NSString*)defaultName;
@end

// Threads and run loops

typedef NSString* NSRunLoopMode;

@interface NSThread : NSObject
@property(class, readonly) BOOL isMainThread;
+ (void)sleepForTimeInterval:(NSTimeInterval)ti;
@end

@interface NSTimer : NSObject
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block;
- (void)invalidate;
@end

@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end

@interface NSOperationQueue : NSObject
- (void)addOperationWithBlock:(void (^)(void))block;
@end

@interface NSProgress : NSObject
- (void)cancel;
@end

@interface NSStream : NSObject
- (void)close;
@end
@interface NSInputStream : NSStream
@end

// HTTP

@interface NSURL : NSObject
+ (nullable instancetype)URLWithString:(NSString*)URLString;
+ (NSURL*)fileURLWithPath:(NSString*)path;
@property(nullable, readonly, copy) NSString* path;
@property(nullable, readonly, copy) NSString* scheme;
@property(nullable, readonly, copy) NSString* user;
@property(nullable, readonly, copy) NSString* password;
@property(nullable, readonly, copy) NSString* host;
@property(nullable, readonly, copy) NSNumber* port;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (BOOL)trashItemAtURL:(NSURL*)url
      resultingItemURL:(NSURL* _Nullable __autoreleasing* _Nullable)outResultingURL
                 error:(NSError* _Nullable __autoreleasing* _Nullable)error;
@end

typedef NS_ENUM(NSUInteger, NSURLRequestCachePolicy) { NSURLRequestUseProtocolCachePolicy = 0 };

@interface NSURLRequest : NSObject
@property(nullable, readonly, copy) NSURL* URL;
- (instancetype)initWithURL:(NSURL*)URL
                cachePolicy:(NSURLRequestCachePolicy)cachePolicy
            timeoutInterval:(NSTimeInterval)timeoutInterval;
@end

@interface NSMutableURLRequest : NSURLRequest
@property(copy) NSString* HTTPMethod;
@property(nullable, copy) NSData* HTTPBody;
- (void)setValue:(nullable NSString*)value forHTTPHeaderField:(NSString*)field;
@end

@interface NSURLResponse : NSObject
@property(readonly) long long expectedContentLength;
@end

@interface NSHTTPURLResponse : NSURLResponse
@property(readonly) NSInteger statusCode;
- (nullable NSString*)valueForHTTPHeaderField:(NSString*)field;
@end

@class NSHTTPCookieStorage, NSURLCache, NSURLCredentialStorage;

@interface NSURLSessionConfiguration : NSObject <NSCopying>
@property(class, readonly, strong) NSURLSessionConfiguration* ephemeralSessionConfiguration;
@property NSTimeInterval timeoutIntervalForRequest;
@property NSTimeInterval timeoutIntervalForResource;
@property BOOL HTTPShouldSetCookies;
@property(nullable, copy) NSDictionary* connectionProxyDictionary;
@property(nullable, strong) NSHTTPCookieStorage* HTTPCookieStorage;
@property(nullable, strong) NSURLCache* URLCache;
@property(nullable, strong) NSURLCredentialStorage* URLCredentialStorage;
@end

@interface NSURLSessionTask : NSObject
@property(readonly) NSUInteger taskIdentifier;
- (void)resume;
- (void)cancel;
@end

@interface NSURLSessionDataTask : NSURLSessionTask
@end

@class NSURLSession;

typedef NS_ENUM(NSInteger, NSURLSessionResponseDisposition) { NSURLSessionResponseAllow = 1 };

@protocol NSURLSessionDelegate <NSObject>
@end

@protocol NSURLSessionTaskDelegate <NSURLSessionDelegate>
@optional
- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest* _Nullable))completionHandler;
- (void)URLSession:(NSURLSession*)session
                    task:(NSURLSessionTask*)task
    didCompleteWithError:(nullable NSError*)error;
@end

@protocol NSURLSessionDataDelegate <NSURLSessionTaskDelegate>
@optional
- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)dataTask
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition disposition))completionHandler;
- (void)URLSession:(NSURLSession*)session
          dataTask:(NSURLSessionDataTask*)dataTask
    didReceiveData:(NSData*)data;
@end

@interface NSURLSession : NSObject
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(nullable id<NSURLSessionDelegate>)delegate
                            delegateQueue:(nullable NSOperationQueue*)queue;
@property(readonly, strong) NSOperationQueue* delegateQueue;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request;
- (void)invalidateAndCancel;
@end

extern "C" {
extern const NSRunLoopMode NSRunLoopCommonModes;
NSString* NSHomeDirectory(void);
NSString* NSTemporaryDirectory(void);
void NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));
}

static inline id _Nullable CFBridgingRelease(CFTypeRef _Nullable __attribute__((cf_consumed)) x) {
  return (__bridge_transfer id)x;
}

_Pragma("clang assume_nonnull end")

#include <dispatch/dispatch.h>
