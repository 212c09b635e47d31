#include "platform/mac/application_delegate.h"

#include "platform/mac/edge.h"

@implementation TorvaneApplicationDelegate {
  torvane::BridgeDelegate* _delegate;
  BOOL _hasLaunched;
}

- (instancetype)initWithDelegate:(torvane::BridgeDelegate*)delegate {
  self = [super init];
  if (self != nil) _delegate = delegate;
  return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  static_cast<void>(notification);
  torvane::atEdge([self] {
    _delegate->applicationDidFinishLaunching();
    _hasLaunched = YES;
  });
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  static_cast<void>(notification);
  if (!_hasLaunched) return;
  torvane::atEdge([self] { _delegate->applicationWillTerminate(); });
}

@end
