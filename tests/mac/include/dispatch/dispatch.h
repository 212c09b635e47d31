#pragma once

#include <Foundation/Foundation.h>

@protocol OS_dispatch_queue <NSObject>
@end
@protocol OS_dispatch_queue_attr <NSObject>
@end
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef NSObject<OS_dispatch_queue_attr>* dispatch_queue_attr_t;
typedef void (^dispatch_block_t)(void);

extern "C" {
dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attr)
    __attribute__((ns_returns_retained));
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
void dispatch_sync(dispatch_queue_t queue, __attribute__((noescape)) dispatch_block_t block);
}
