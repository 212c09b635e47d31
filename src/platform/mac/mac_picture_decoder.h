#pragma once

#import <dispatch/dispatch.h>

#include <memory>

#include "ports/picture_decoder.h"

namespace torvane {

// Decodes one picture at a time on a queue of its own.
class MacPictureDecoder final : public PictureDecoder {
 public:
  MacPictureDecoder();
  // Waits for what is being decoded.
  ~MacPictureDecoder() override;
  MacPictureDecoder(const MacPictureDecoder&) = delete;
  MacPictureDecoder& operator=(const MacPictureDecoder&) = delete;

  void decode(Bytes data, std::function<void(std::shared_ptr<const Picture>)> done) override;

 private:
  dispatch_queue_t queue_;
};

struct PixelSize {
  double width = 0, height = 0;
};

// The picture in `data`, no larger than it takes to cover the screen; null when there is none that
// may be shown.
[[nodiscard]] std::shared_ptr<const Picture> decodedPicture(const Bytes& data,
                                                            const PixelSize& screen);

}  // namespace torvane
