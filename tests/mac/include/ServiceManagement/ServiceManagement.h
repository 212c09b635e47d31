#pragma once

#include <Foundation/Foundation.h>

_Pragma("clang assume_nonnull begin")

    typedef NS_ENUM(NSInteger, SMAppServiceStatus) {
      SMAppServiceStatusNotRegistered = 0,
      SMAppServiceStatusEnabled = 1,
      SMAppServiceStatusRequiresApproval = 2,
      SMAppServiceStatusNotFound = 3
    };

@interface SMAppService : NSObject
@property(class, readonly) SMAppService* mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (BOOL)unregisterAndReturnError:(NSError* _Nullable __autoreleasing* _Nullable)error;
@end

_Pragma("clang assume_nonnull end")
