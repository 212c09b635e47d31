#pragma once

#include <optional>
#include <utility>

#include "protocol/bytes.h"

namespace torvane {

// Whose turn it is to be decoded, of picture files that may come faster than they can be: one at a
// time, then the newest that came meanwhile. Those between are never decoded, and two files at most
// are kept, however many come.
class NewestPicture {
 public:
  // A file has come. To be decoded now; none while another is being decoded.
  [[nodiscard]] std::optional<Bytes> take(Bytes file) {
    if (std::exchange(isDecoding_, true)) {
      waiting_ = std::move(file);
      return std::nullopt;
    }
    return file;
  }

  // The one that was being decoded is done. What is to be decoded now; none when nothing came.
  [[nodiscard]] std::optional<Bytes> next() {
    isDecoding_ = waiting_.has_value();
    return std::exchange(waiting_, std::nullopt);
  }

 private:
  bool isDecoding_ = false;
  std::optional<Bytes> waiting_;
};

}  // namespace torvane
