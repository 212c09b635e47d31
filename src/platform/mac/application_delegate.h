#pragma once

#import <AppKit/AppKit.h>

#include "app/bridge_delegate.h"

// The application's delegate: passes on its beginning and its end.
@interface TorvaneApplicationDelegate : NSObject <NSApplicationDelegate>
// `delegate` outlives this object.
- (instancetype)initWithDelegate:(torvane::BridgeDelegate*)delegate;
@end
