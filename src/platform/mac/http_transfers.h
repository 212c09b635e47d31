#pragma once

#import <Foundation/Foundation.h>

#include "bridge/http_session.h"

// The delegate of one URL session: collects each task's answer, and hands it over when the task
// ends. The session calls it on a background queue of its own.
@interface TorvaneTransfers : NSObject <NSURLSessionDataDelegate>
- (instancetype)initFollowingRedirects:(BOOL)followsRedirects;

// Before the task is resumed. An answer of more than `maxBytes` is an error; 0: no limit.
- (void)expectTask:(NSURLSessionTask*)task
          maxBytes:(std::uint64_t)maxBytes
        completion:(torvane::HttpCompletion)completion;
@end
