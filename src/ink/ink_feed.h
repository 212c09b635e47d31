#pragma once

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

// Live ink and the overlay picture, fetched from the engine while it runs, one question at a time.
// Main thread only.
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

 private:
  [[nodiscard]] std::optional<InkAnswer> quietAnswer() const;
  void inkDidArrive(const std::shared_ptr<const InkAnswer>& answer);
  void takeInk(const std::shared_ptr<const InkAnswer>& answer, std::size_t from);
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
};

}  // namespace torvane
