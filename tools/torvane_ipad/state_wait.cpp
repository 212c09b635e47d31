#include "torvane_ipad/state_wait.h"

#include <chrono>
#include <thread>

#include "torvane_ipad/state_text.h"

namespace torvane::ipad {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPause = std::chrono::milliseconds(100);
constexpr auto kPatience = std::chrono::seconds(3);  // an action takes 2.5 s at most
constexpr auto kLongestJump = std::chrono::seconds(60);

bool isOnItsWay(const JsonObject& state) {
  return textOf(objectMember(state, "progress"), "task") == "jump";
}

}  // namespace

std::optional<JsonObject> stateOnceDone(EngineSession& session, JsonObject state,
                                        const StateTest& isDone) {
  const auto start = Clock::now();
  while (!isDone(state)) {
    const auto patience = isOnItsWay(state) ? kLongestJump : kPatience;
    if (Clock::now() - start >= patience) break;
    std::this_thread::sleep_for(kPause);
    auto next = session.get("/api/state");
    if (!next) return std::nullopt;
    state = std::move(*next);
  }
  return state;
}

}  // namespace torvane::ipad
