// The state of the presentation, once or as it changes.

#include <chrono>

#include "torvane_ipad/answers.h"
#include "torvane_ipad/commands.h"
#include "torvane_ipad/interrupt.h"
#include "torvane_ipad/reach_helper.h"
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

  // Says what is new in an answer to kStateRequest.
  void take(const Reply& reply) {
    const std::string problem = problemOf(reply);
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
  Exit exit = Exit::ok;
  const auto reach = HelperReach::prepare(options, console, exit);
  const auto session = reach ? reach->open({}, exit) : nullptr;
  if (!session) return exit;
  const auto answer = session->request(kStateRequest);
  if (const auto* failure = std::get_if<LinkFailure>(&answer)) return reach->fail(*failure);
  const auto state = objectIn(std::get<Reply>(answer), console);
  if (!state) return Exit::refused;
  sayState(*state, describeState(*state), console);
  return Exit::ok;
}

Exit watchState(const Options& options, const Console& console) {
  Exit exit = Exit::ok;
  const auto reach = HelperReach::prepare(options, console, exit);
  const auto session = reach ? reach->open({}, exit) : nullptr;
  if (!session) return exit;

  noticeInterrupts();
  const auto start = std::chrono::steady_clock::now();
  Watch watch(console);
  while (!wasInterrupted()) {
    const auto answer = session->request(kStateRequest);
    if (const auto* failure = std::get_if<LinkFailure>(&answer)) return reach->fail(*failure);
    watch.take(std::get<Reply>(answer));
    const Seconds left = start + Seconds(options.forTime) - std::chrono::steady_clock::now();
    if (options.forTime > 0 && left.count() <= 0) break;
    const Seconds pause(options.every);
    sleepUnlessInterrupted(options.forTime > 0 ? std::min(pause, left) : pause);
  }
  return Exit::ok;
}

}  // namespace torvane::ipad
