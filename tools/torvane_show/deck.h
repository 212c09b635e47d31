#pragma once

#include <string>
#include <vector>

namespace torvane::show {

struct PageFacts {
  std::string title;
  std::string notes;
  double aspect = 0.75;  // height divided by width
};

// What is known of a PDF besides its pictures. All texts are UTF-8.
struct Deck {
  std::string path;  // absolute
  std::string title;
  std::string revision;  // another one when the file may have changed
  std::vector<PageFacts> pages;

  [[nodiscard]] int count() const { return static_cast<int>(pages.size()); }
};

}  // namespace torvane::show
