// The state of the presentation, once or as it changes.

#include <chrono>

#include "torvane_ipad/commands.h"
#include "torvane_ipad/engine_session.h"
#include "torvane_ipad/interrupt.h"
#include "torvane_ipad/state_text.h"

namespace torvane::ipad {
namespace {

using Seconds = std::chrono::duration<double>;

const Request kStateRequest{.path = "/api/state"};

void sayState(const JsonObject& state, const std::vector<std::string>& lines,
              const Console& console) {
  if (console.isJson()) return console.say("state", "", {{"state", state}});
  for (const std::string& line : lines) console.say("state", line, {});
}

class Watch {
 public:
  explicit Watch(const Console& console) : console_(console) {}

  // Says what is new in an answer to kStateRequest; `problem` is what went wrong, if anything did.
  void take(const Reply& reply, const std::string& problem) {
    const auto state = parseJsonObject(asText(reply.body));
    if (problem != problem_) {
      problem_ = problem;
      console_.say("engine", problem.empty() ? "The engine answers again." : problem,
                   {{"answers", problem.empty()}});
    }
    if (!problem.empty() || !state || state == last_) return;
    const auto lines = last_ ? describeChanges(*last_, *state) : describeState(*state);
    if (!lines.empty()) sayState(*state, lines, console_);
    last_ = state;
  }

 private:
  const Console& console_;
  std::optional<JsonObject> last_;
  std::string problem_;
};

}  // namespace

Exit showState(const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto state = session.isOpen() ? session.get(kStateRequest.path) : std::nullopt;
  if (!state) return session.exit();
  sayState(*state, describeState(*state), console);
  return Exit::ok;
}

Exit watchState(const Options& options, const Console& console) {
  EngineSession session(options, console);
  if (!session.isOpen()) return session.exit();

  noticeInterrupts();
  const auto start = std::chrono::steady_clock::now();
  Watch watch(console);
  while (!wasInterrupted()) {
    const auto reply = session.ask(kStateRequest);
    if (!reply) return session.exit();
    watch.take(*reply, session.problemOf(*reply));
    const Seconds left = start + Seconds(options.forTime) - std::chrono::steady_clock::now();
    if (options.forTime > 0 && left.count() <= 0) break;
    const Seconds pause(options.every);
    sleepUnlessInterrupted(options.forTime > 0 ? std::min(pause, left) : pause);
  }
  return Exit::ok;
}

}  // namespace torvane::ipad
