#pragma once

#include <functional>

#include "torvane_ipad/engine_session.h"

namespace torvane::ipad {

using StateTest = std::function<bool(const JsonObject& state)>;

// An action's answer comes before a slow presentation program has done it. Asks for the state until
// `isDone` says that it has, for a few seconds, or while the program is on its way to another
// slide. The latest state; none after a failure that was reported.
[[nodiscard]] std::optional<JsonObject> stateOnceDone(EngineSession& session, JsonObject state,
                                                      const StateTest& isDone);

}  // namespace torvane::ipad
