// Whether the helper refuses requests that it has seen before.

#include <algorithm>

#include "torvane_ipad/commands.h"
#include "torvane_ipad/reach_helper.h"

namespace torvane::ipad {
namespace {

// The helper answers this path itself and in order: when the answer to a later request is there,
// everything before it was handled.
const Request kRequest{.path = "/p2p/bridge-info"};

using Count = std::variant<std::int64_t, LinkFailure>;

// Sends `frame` so many times, then a fresh request, and counts the answers to the frame.
Count countAnswers(HelperSession& session, const SignedRequests::Outgoing& frame, int times) {
  for (int i = 0; i < times; ++i) session.send(frame.frame);
  const auto fence = session.requests().sign(kRequest);
  session.send(fence->frame);
  const auto replies = session.repliesUntil(fence->id);
  if (const auto* failure = std::get_if<LinkFailure>(&replies)) return *failure;
  return std::ranges::count(std::get<std::vector<Reply>>(replies), frame.id, &Reply::id);
}

std::string inWords(std::int64_t answers) {
  return answers == 0 ? "no answer"
                      : std::to_string(answers) + (answers == 1 ? " answer" : " answers");
}

}  // namespace

Exit tryReplay(const Options& options, const Console& console) {
  Exit exit = Exit::ok;
  const auto reach = HelperReach::prepare(options, console, exit);
  auto session = reach ? reach->open({}, exit) : nullptr;
  if (!session) return exit;
  const auto frame = session->requests().sign(kRequest);
  const Count twice = countAnswers(*session, *frame, 2);
  if (const auto* failure = std::get_if<LinkFailure>(&twice)) return reach->fail(*failure);

  // A new connection has a new challenge, so that the old signature means nothing there. Its own
  // requests use other ids than the old one.
  session = reach->open({0, frame->id + 1}, exit);
  if (!session) return exit;
  const Count again = countAnswers(*session, *frame, 1);
  if (const auto* failure = std::get_if<LinkFailure>(&again)) return reach->fail(*failure);

  const auto first = std::get<std::int64_t>(twice);
  const auto second = std::get<std::int64_t>(again);
  const bool isRefused = first == 1 && second == 0;
  console.say("replay",
              "Sent twice on one connection: " + inWords(first) +
                  ". Sent again on a new connection: " + inWords(second) + ". " +
                  (isRefused ? "Replays are refused." : "That must be 1 answer and no answer."),
              {{"sameConnection", first}, {"newConnection", second}, {"refused", isRefused}});
  return isRefused ? Exit::ok : Exit::refused;
}

}  // namespace torvane::ipad
