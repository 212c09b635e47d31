#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "ink/ink_answer.h"
#include "ink/newest_picture.h"
#include "ink/overlay_controller.h"
#include "ports/clock.h"
#include "ports/http_session.h"
#include "ports/main_hop.h"
#include "ports/picture_decoder.h"

namespace torvane {

// Live ink and the overlay picture, fetched from the engine while it runs, one question at a time:
// with each tick of a timer, and at once when something was sent to the engine during a show. Main
// thread only.
class InkFeed {
 public:
  struct Ports {
    HttpSessions& http;
    PictureDecoder& pictures;
    Clock& clock;
  };

  class Host {
   public:
    [[nodiscard]] virtual bool isServerRunning() const = 0;

   protected:
    ~Host() = default;
  };

  InkFeed(const Ports& ports, const MainHop& main, OverlayController& overlay, const Host& host)
      : ports_(ports), main_(main), overlay_(overlay), overlayView(overlay.view()), host_(host) {}

  void inkTick();

  // Asks at once while a show is presented; behind the question that is under way, and once in 8 ms
  // at most.
  void engineDidTakeSomething();

 private:
  enum class Cause { timer, change };

  void ask(Cause cause);
  [[nodiscard]] std::optional<InkAnswer> quietAnswer() const;
  void inkDidArrive(const std::shared_ptr<const InkAnswer>& answer, Cause cause);
  void takeInk(const std::shared_ptr<const InkAnswer>& answer, std::size_t from, Cause cause);
  void answerEnded();
  void applyInkEvents(std::span<const InkEvent> events);
  void fetchOverlayImage(std::int64_t version);
  void decodePicture(std::optional<Bytes> file);
  void pictureWasDecoded(std::shared_ptr<const Picture> picture);
  void clearOverlay();

  const Ports ports_;
  const MainHop main_;
  OverlayController& overlay_;
  OverlayView& overlayView;
  const Host& host_;

  std::int64_t inkSeq = 0;         // the number of the last event that arrived
  bool inkBusy = false;            // an answer is on its way
  std::int64_t lastOverlayV = -1;  // version of the picture shown or on its way
  NewestPicture newestPicture;

  bool isPresenting = false;       // as the last answer said
  double changeAskedAt = -1;       // media time
  bool isChangeScheduled = false;  // for when it may be asked again
  // Something has changed since the question that is under way. Read by the thread that brings its
  // answer, which may outlive this.
  const std::shared_ptr<std::atomic<bool>> asksAgain = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace torvane
