#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "platform/posix/body_file.h"
#include "ports/http_session.h"

// The delegate of one URL session: collects each task's answer, and hands it over when the task
// ends. The session calls it on a background queue of its own.
@interface TorvaneTransfers : NSObject <NSURLSessionDataDelegate>
// Redirects, if they are followed, to addresses with encryption only.
- (instancetype)initFollowingRedirects:(BOOL)followsRedirects;

// Before the task is resumed. An answer of more than `maxBytes` is an error; 0: no limit. The body
// goes to `file` where there is one.
- (void)expectTask:(NSURLSessionTask*)task
          maxBytes:(std::uint64_t)maxBytes
            saveTo:(std::unique_ptr<torvane::BodyFile>)file
        completion:(torvane::HttpCompletion)completion;
@end
