#pragma once

#include <string>

#include "torvane_ipad/options.h"

namespace torvane::ipad {

// Why a connection did not come about or ended.
struct LinkFailure {
  enum class Kind {
    unreachable,    // nothing answered
    notAHelper,     // something else answered
    otherHelper,    // another certificate than the trusted one; `detail` is its fingerprint
    strangeHelper,  // one that this device was never paired with; `detail` likewise
    refused,        // by the helper; `detail` is its reason
    notApproved,    // the helper's user has not answered in time
    noAnswer,       // connected, but this request was not answered in time
    lost,           // the connection broke
    misbehaviour,   // the helper broke the protocol
  };
  Kind kind = Kind::lost;
  std::string detail;  // for the kinds that name no other: why, in plain words, or empty
};

// A sentence or two that say what happened and what to do. `helper` is host:port.
[[nodiscard]] std::string explain(const LinkFailure& failure, const std::string& helper);

[[nodiscard]] Exit exitFor(const LinkFailure& failure);

}  // namespace torvane::ipad
