#include "ink/ink_feed.h"

#include "engine/engine_requests.h"

namespace torvane {
namespace {

constexpr double kEventsTimeout = 2.0;
constexpr double kPictureTimeout = 3.0;
constexpr double kChangeInterval = 0.008;  // between two questions because of changes

}  // namespace

void InkFeed::inkTick() {
  ask(Cause::timer);
}

void InkFeed::engineDidTakeSomething() {
  if (!isPresenting) return;
  if (inkBusy) {
    *asksAgain = true;
    return;
  }
  const double wait = changeAskedAt + kChangeInterval - ports_.clock.mediaTime();
  if (wait <= 0) {
    ask(Cause::change);
  } else if (!isChangeScheduled) {
    isChangeScheduled = true;
    main_.after(wait, [this] {
      isChangeScheduled = false;
      engineDidTakeSomething();
    });
  }
}

void InkFeed::ask(Cause cause) {
  if (!host_.isServerRunning() || inkBusy) return;
  inkBusy = true;
  *asksAgain = false;
  if (cause == Cause::change) changeAskedAt = ports_.clock.mediaTime();
  ports_.http.shared().dataTask(
      engineRequest("/api/ink/events?since=" + std::to_string(inkSeq), kEventsTimeout),
      [this, main = main_, quiet = quietAnswer(), again = asksAgain,
       cause](const HttpResult& result) {
        // Read here, off the main thread, which a large answer would hold.
        auto read = parseInkAnswer(result.body);
        if (!read) return main.async([this] { answerEnded(); });
        const bool canWait = read == quiet && !*again;
        const auto answer = std::make_shared<const InkAnswer>(std::move(*read));
        const auto take = [this, answer, cause] { inkDidArrive(answer, cause); };
        if (canWait) {
          main.asyncWhenAwake(take);
        } else {
          main.async(take);
        }
      });
}

void InkFeed::answerEnded() {
  inkBusy = false;
  if (*asksAgain) engineDidTakeSomething();
}

// What changes nothing if it is the answer to the question that is about to be asked: it can wait
// for the next tick, so that the main thread wakes up once per poll, not twice, while nobody draws.
// None while every answer moves the fade of the laser dot on.
std::optional<InkAnswer> InkFeed::quietAnswer() const {
  if (overlayView.showsLaser(ports_.clock.mediaTime())) return std::nullopt;
  return InkAnswer{inkSeq, {}, overlay_.isVisible(), overlayView.aspect, lastOverlayV};
}

void InkFeed::inkDidArrive(const std::shared_ptr<const InkAnswer>& answer, Cause cause) {
  // The engine was started anew. What this answer holds is not the whole of its ink: skip it and
  // ask from the start.
  if (answer->seq < inkSeq) {
    inkSeq = 0;
    clearOverlay();
    answerEnded();
    return;
  }
  inkSeq = answer->seq;
  overlayView.setAspect(answer->aspect);
  takeInk(answer, 0, cause);
}

// Usually all events at once. A huge answer takes several turns of the main queue, so that it
// does not hold up everything else; it stays the only one on its way until it is done.
void InkFeed::takeInk(const std::shared_ptr<const InkAnswer>& answer, std::size_t from,
                      Cause cause) {
  const auto events = std::span(answer->events).subspan(from);
  const auto count = countForOneTurn(events, overlayView.order.size());
  applyInkEvents(events.first(count));
  if (count < events.size()) {
    main_.async([this, answer, next = from + count, cause] { takeInk(answer, next, cause); });
    return;
  }
  if (answer->overlayV != lastOverlayV) fetchOverlayImage(answer->overlayV);
  isPresenting = answer->presenting;
  overlay_.updateOverlayWindow(isPresenting, cause == Cause::timer);
  answerEnded();
}

void InkFeed::applyInkEvents(std::span<const InkEvent> events) {
  const bool applied = applyEvents(overlayView, events, ports_.clock.mediaTime());
  const double now = ports_.clock.mediaTime();
  if (isRedrawDue(overlayView, applied, now)) {
    overlayView.setNeedsDisplay();
  } else {
    overlayView.wipeFadedLaser(now);
  }
}

void InkFeed::fetchOverlayImage(std::int64_t version) {
  lastOverlayV = version;  // before the fetch: one that fails is not tried again
  ports_.http.shared().dataTask(
      engineRequest("/api/ink/overlay", kPictureTimeout), [this, main = main_](HttpResult result) {
        // What is no picture goes through the decoder as well, so that the answers take effect
        // in the order in which they came.
        const bool isFound = result.response && result.response->status == 200;
        const auto file = std::make_shared<Bytes>(isFound ? std::move(result.body) : Bytes{});
        main.async([this, file] { decodePicture(newestPicture.take(std::move(*file))); });
      });
}

void InkFeed::decodePicture(std::optional<Bytes> file) {
  if (!file) return;
  ports_.pictures.decode(
      std::move(*file), [this, main = main_](std::shared_ptr<const Picture> picture) {
        main.async([this, picture = std::move(picture)] { pictureWasDecoded(picture); });
      });
}

void InkFeed::pictureWasDecoded(std::shared_ptr<const Picture> picture) {
  overlayView.setOverlayImage(std::move(picture));
  overlayView.setNeedsDisplay();
  decodePicture(newestPicture.next());
}

void InkFeed::clearOverlay() {
  overlayView.clearInk();
  overlayView.setOverlayImage(nullptr);
  overlayView.setNeedsDisplay();
}

}  // namespace torvane
