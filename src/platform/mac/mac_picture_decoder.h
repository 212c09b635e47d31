#pragma once

#import <dispatch/dispatch.h>

#include <atomic>
#include <memory>

#include "ink/picture_decoder.h"

namespace torvane {

// Decodes one picture at a time on a queue of its own. What is larger than any screen is kept
// smaller.
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
  std::shared_ptr<std::atomic<int>> waiting_ = std::make_shared<std::atomic<int>>(0);
};

// The picture in `data`; null when there is none that may be shown.
[[nodiscard]] std::shared_ptr<const Picture> decodedPicture(const Bytes& data);

}  // namespace torvane
