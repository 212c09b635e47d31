// What moves the show. Each tells what the state says afterwards, not what was hoped for.

#include "torvane_ipad/commands.h"
#include "torvane_ipad/engine_session.h"
#include "torvane_ipad/printable.h"
#include "torvane_ipad/state_text.h"
#include "torvane_ipad/state_wait.h"

namespace torvane::ipad {
namespace {

std::int64_t number(const JsonObject& state, std::string_view key) {
  return integerMember(state, key).value_or(0);
}

bool isAtSamePlace(const JsonObject& a, const JsonObject& b) {
  return number(a, "slide") == number(b, "slide") && number(a, "step") == number(b, "step") &&
         isTrue(a, "atEnd") == isTrue(b, "atEnd") && isTrue(a, "blank") == isTrue(b, "blank") &&
         textOf(a, "document") == textOf(b, "document");
}

bool isAtFirst(const JsonObject& state) {
  return number(state, "slide") <= 1 && number(state, "step") == 0;
}

// Past this a show may have an end screen; without a show there is nothing.
bool isAtLast(const JsonObject& state) {
  const bool isLast = number(state, "slide") >= number(state, "count") &&
                      number(state, "step") >= number(state, "steps");
  return isTrue(state, "atEnd") || (isLast && !isTrue(state, "presenting"));
}

// One action of a command.
class Action {
 public:
  Action(const Options& options, const Console& console)
      : console_(console), session_(options, console) {}

  [[nodiscard]] EngineSession& session() { return session_; }
  [[nodiscard]] std::optional<JsonObject> stateBefore() {
    return session_.isOpen() ? session_.get("/api/state") : std::nullopt;
  }

  // The state in which the action ended, as stateOnceDone() has it.
  [[nodiscard]] std::optional<JsonObject> act(const std::string& path, const JsonObject& body,
                                              const StateTest& isDone) {
    if (!session_.isOpen()) return std::nullopt;
    auto state = session_.post(path, body);
    return state ? stateOnceDone(session_, std::move(*state), isDone) : std::nullopt;
  }

  // What keeps the presentation from being driven belongs to every result.
  Exit say(const std::string& event, const std::string& sentence, const JsonObject& state) {
    console_.say(event, sentence, {{"state", state}});
    const std::string problem = textOf(state, "problem");
    if (!problem.empty() && !console_.isJson()) console_.note(problem);
    return Exit::ok;
  }

  Exit fail(const std::string& sentence, const JsonObject& state) {
    const std::string problem = textOf(state, "problem");
    return session_.fail(problem.empty() ? sentence : sentence + " " + problem);
  }

 private:
  const Console& console_;
  EngineSession session_;
};

// next and previous. `isLimit` says that there is nowhere to go.
Exit step(const std::string& command, bool (*isLimit)(const JsonObject&), const Options& options,
          const Console& console) {
  Action action(options, console);
  const auto before = action.stateBefore();
  if (!before) return action.session().exit();
  const bool isNowhereToGo = isLimit(*before);
  const auto after = action.act("/api/" + command, {}, [&](const JsonObject& state) {
    return isNowhereToGo || !isAtSamePlace(*before, state);
  });
  if (!after) return action.session().exit();
  const bool hasMoved = !isAtSamePlace(*before, *after);
  return action.say(command, (hasMoved ? "" : "Nothing moved: ") + describePlace(*after), *after);
}

Exit setShow(bool runs, const Options& options, const Console& console) {
  Action action(options, console);
  const auto state =
      action.act(runs ? "/api/show/start" : "/api/show/end", {},
                 [&](const JsonObject& now) { return isTrue(now, "presenting") == runs; });
  if (!state) return action.session().exit();
  const bool isRunning = isTrue(*state, "presenting");
  if (isRunning != runs) {
    return action.fail(runs ? "The slide show has not started." : "The slide show goes on.",
                       *state);
  }
  return action.say(options.command,
                    runs ? "The slide show is running. " + describePlace(*state)
                         : "The slide show is not running.",
                    *state);
}

}  // namespace

Exit goToSlide(const Options& options, const Console& console) {
  Action action(options, console);
  const auto before = action.stateBefore();
  if (!before) return action.session().exit();
  const auto count = number(*before, "count");
  if (options.slide > count) {
    const std::string has =
        count == 0 ? "no presentation is open." : "the last one is " + std::to_string(count) + ".";
    return action.fail("There is no slide " + options.operands[0] + ": " + has, *before);
  }
  const auto after =
      action.act("/api/goto", {{"slide", options.slide}},
                 [&](const JsonObject& state) { return number(state, "slide") == options.slide; });
  if (!after) return action.session().exit();
  if (number(*after, "slide") != options.slide) {
    return action.fail("The presentation stays where it is: " + describePlace(*after) + ".",
                       *after);
  }
  return action.say("goto", describePlace(*after), *after);
}

Exit goOn(const Options& options, const Console& console) {
  return step("next", isAtLast, options, console);
}

Exit goBack(const Options& options, const Console& console) {
  return step("previous", isAtFirst, options, console);
}

Exit startShow(const Options& options, const Console& console) {
  return setShow(true, options, console);
}

Exit endShow(const Options& options, const Console& console) {
  return setShow(false, options, console);
}

Exit blackOut(const Options& options, const Console& console) {
  Action action(options, console);
  const auto before = action.stateBefore();
  if (!before) return action.session().exit();
  const bool on = options.black.value_or(!isTrue(*before, "blank"));
  const auto state = action.act("/api/blank", {{"on", on}},
                                [&](const JsonObject& now) { return isTrue(now, "blank") == on; });
  if (!state) return action.session().exit();
  if (isTrue(*state, "blank") != on) {
    return action.fail(on ? "The screen has not gone dark." : "The screen stays dark.", *state);
  }
  return action.say(
      "black", on ? "The screen is dark." : "The slide is on the screen. " + describePlace(*state),
      *state);
}

}  // namespace torvane::ipad
