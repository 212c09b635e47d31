#pragma once

#include <functional>
#include <memory>

#include "ports/canvas.h"
#include "protocol/bytes.h"

namespace torvane {

class PictureDecoder {
 public:
  virtual ~PictureDecoder() = default;

  // Decodes a picture file off the main thread, one after the other; what is larger than the
  // largest screen of now may be kept at that screen's size. `done` is called exactly once, on a
  // background thread, never inside this call and in the order of the calls: with null when the
  // data is no picture of a raster format or one of more than 64 million pixels, which is found out
  // before any of them is decoded. Main thread only.
  virtual void decode(Bytes data, std::function<void(std::shared_ptr<const Picture>)> done) = 0;
};

}  // namespace torvane
