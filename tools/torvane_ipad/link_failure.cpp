#include "torvane_ipad/link_failure.h"

#include "torvane_ipad/printable.h"

namespace torvane::ipad {
namespace {

std::string explainRefusal(const std::string& reason, const std::string& helper) {
  const std::string start = "The helper at " + helper + " refused this device";
  if (reason == "declined") {
    return start + ": its user chose not to pair it. After the helper was restarted it asks again.";
  }
  if (reason == "proof")
    return start +
           ": it did not accept the proof of this device's key. "
           "Update it and this program to the same version.";
  if (reason == "name") {
    return start + ": it does not accept the name. Choose another one with --name.";
  }
  if (reason == "busy") {
    return start + ": too many devices want to be paired right now. Try again in a minute.";
  }
  return start + " (" + printable(reason) + ").";
}

std::string withDetail(const std::string& text, const std::string& detail) {
  return detail.empty() ? text + "." : text + " (" + printable(detail) + ").";
}

}  // namespace

std::string explain(const LinkFailure& failure, const std::string& helper) {
  switch (failure.kind) {
    case LinkFailure::Kind::unreachable:
      return withDetail("No helper answered at " + helper, failure.detail) +
             " Is Torvane P2P Helper running on that computer?";
    case LinkFailure::Kind::notAHelper:
      return withDetail("What answered at " + helper + " is no Torvane P2P Helper",
                        failure.detail) +
             " Look for its address with \"torvane-ipad find\" or in its menu.";
    case LinkFailure::Kind::otherHelper:
      return "The helper at " + helper +
             " shows another certificate than the one remembered for it, so nothing was sent. "
             "If the helper was set up anew, run \"torvane-ipad pair --trust-new\"; if it was "
             "not, another computer may be posing as it. The new fingerprint is " +
             printable(failure.detail) + ".";
    case LinkFailure::Kind::strangeHelper:
      return "This device was never paired with the helper at " + helper +
             ", so nothing was sent. Run \"torvane-ipad pair\" for it first, and compare the "
             "digits "
             "that both show. Its fingerprint is " +
             printable(failure.detail) + ".";
    case LinkFailure::Kind::refused:
      return explainRefusal(failure.detail, helper);
    case LinkFailure::Kind::notApproved:
      return "Nobody has answered at the helper whether to pair this device. Answer its question "
             "and try again, or wait longer with --approval.";
    case LinkFailure::Kind::noAnswer:
      return "The helper at " + helper +
             " did not answer in time. If its engine hangs, choose \"Stop Server\" and \"Start "
             "Server\" there; --timeout lets this program wait longer.";
    case LinkFailure::Kind::lost:
      return withDetail("The connection to the helper at " + helper + " was lost", failure.detail) +
             " Try again when the helper runs.";
    case LinkFailure::Kind::misbehaviour:
      return withDetail("The helper at " + helper + " broke the rules of the peer link",
                        failure.detail) +
             " Update it and this program to the same version.";
  }
  return {};
}

Exit exitFor(const LinkFailure& failure) {
  switch (failure.kind) {
    case LinkFailure::Kind::refused:
    case LinkFailure::Kind::notApproved:
    case LinkFailure::Kind::noAnswer:
    case LinkFailure::Kind::misbehaviour:
      return Exit::refused;
    default:
      return Exit::noConnection;
  }
}

}  // namespace torvane::ipad
