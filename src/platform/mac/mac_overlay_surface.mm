#include "platform/mac/mac_overlay_surface.h"

#include "platform/mac/edge.h"
#include "platform/mac/mac_canvas.h"
#include "platform/mac/mac_geometry.h"

@implementation TorvaneOverlayContent {
  torvane::OverlayView* _content;
  const torvane::Clock* _clock;
  double _scale;  // pixels per point when it was last painted
}

- (instancetype)initWithFrame:(NSRect)frame
                      content:(torvane::OverlayView*)content
                        clock:(const torvane::Clock*)clock {
  self = [super initWithFrame:frame];
  if (self != nil) {
    _content = content;
    _clock = clock;
  }
  return self;
}

- (void)forgetContent {
  _content = nullptr;
}

// As large as the window is, whoever resizes that.
- (void)setFrameSize:(NSSize)newSize {
  [super setFrameSize:newSize];
  if (_content == nullptr) return;
  torvane::atEdge([&] { _content->setSize(newSize.width, newSize.height); });
}

- (BOOL)isFlipped {
  return YES;
}

- (BOOL)isOpaque {
  return NO;
}

- (void)drawRect:(NSRect)dirtyRect {
  if (_content == nullptr) return;
  torvane::atEdge([&] {
    const double scale = self.window.backingScaleFactor;
    if (scale <= 0) return;  // in no window
    if (_scale != 0 && _scale != scale) _content->discardLayer();
    _scale = scale;
    // The system may ask for more than there is of the view.
    const torvane::Rect dirty = torvane::intersected(
        torvane::widenedToWhole(torvane::toRect(dirtyRect)), torvane::toRect(self.bounds));
    torvane::MacCanvas canvas(dirty, scale);
    _content->draw(canvas, dirty, _clock->mediaTime());
    canvas.copyTo([NSGraphicsContext currentContext].CGContext);
  });
}

@end

namespace torvane {
namespace {

NSWindow* makeWindow(const Rect& frame) {
  NSWindow* window = [[NSWindow alloc] initWithContentRect:toCGRect(frame)
                                                 styleMask:NSWindowStyleMaskBorderless
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
  window.opaque = NO;
  window.backgroundColor = [NSColor clearColor];
  window.hasShadow = NO;
  window.ignoresMouseEvents = YES;  // they go to the slide show
  window.level = NSScreenSaverWindowLevel;
  window.collectionBehavior =
      NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary |
      NSWindowCollectionBehaviorIgnoresCycle | NSWindowCollectionBehaviorFullScreenAuxiliary;
  return window;
}

}  // namespace

MacOverlaySurface::MacOverlaySurface(const Rect& frame, OverlayView& content, const Clock& clock)
    : content_(content),
      window_(makeWindow(frame)),
      view_([[TorvaneOverlayContent alloc] initWithFrame:CGRectMake(0, 0, frame.width, frame.height)
                                                 content:&content
                                                   clock:&clock]) {
  window_.contentView = view_;
  content_.setSize(frame.width, frame.height);
  content_.setDisplay(this);
}

MacOverlaySurface::~MacOverlaySurface() {
  content_.setDisplay(nullptr);
  [view_ forgetContent];
  [window_ orderOut:nil];
}

// The system moves windows on its own when displays come and go.
Rect MacOverlaySurface::frame() const { return toRect(window_.frame); }

void MacOverlaySurface::setFrame(const Rect& frame) {
  [view_ setNeedsDisplay:YES];
  [window_ setFrame:toCGRect(frame) display:YES];
}

bool MacOverlaySurface::isVisible() const { return window_.isVisible; }

void MacOverlaySurface::orderFrontRegardless() { [window_ orderFrontRegardless]; }

void MacOverlaySurface::orderOut() {
  [window_ orderOut:nil];
  content_.discardLayer();
}

void MacOverlaySurface::invalidate(const Rect& viewPart) {
  if (!viewPart.isEmpty()) [view_ setNeedsDisplayInRect:toCGRect(viewPart)];
}

}  // namespace torvane
