#pragma once

#include <string>

#include "protocol/json.h"
#include "torvane_ipad/options.h"

namespace torvane::ipad {

// What the program says: sentences, or one JSON object per line. Texts from the network must have
// gone through printable() before they become part of a sentence.
class Console {
 public:
  explicit Console(bool json) : json_(json) {}

  [[nodiscard]] bool isJson() const { return json_; }

  // A result: the sentence, or `fact` with the member "event" in front. Written at once.
  void say(const std::string& event, const std::string& sentence, const JsonObject& fact) const;

  // Something to know while the program goes on; not part of the result.
  void note(const std::string& sentence) const;

  // Why the program ends; gives `exit` back.
  Exit fail(Exit exit, const std::string& sentence) const;

 private:
  bool json_;
};

}  // namespace torvane::ipad
