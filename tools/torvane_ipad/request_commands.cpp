// Single requests.

#include "torvane_ipad/answers.h"
#include "torvane_ipad/commands.h"
#include "torvane_ipad/printable.h"
#include "torvane_ipad/private_files.h"
#include "torvane_ipad/reach_helper.h"

namespace torvane::ipad {
namespace {

// A message carries at most 16 MiB; the rest is for the headers.
constexpr std::size_t kMostBody = 16 * 1024 * 1024 - 64 * 1024;

// The answer to one request on a connection of its own; none after a failure was reported.
std::optional<Reply> askOnce(const Request& request, const Options& options, const Console& console,
                             Exit& exit) {
  const auto reach = HelperReach::prepare(options, console, exit);
  if (!reach) return std::nullopt;
  const auto session = reach->open({}, exit);
  if (!session) return std::nullopt;
  auto answer = session->request(request);
  if (auto* reply = std::get_if<Reply>(&answer)) return std::move(*reply);
  exit = reach->fail(std::get<LinkFailure>(answer));
  return std::nullopt;
}

}  // namespace

Exit showInfo(const Options& options, const Console& console) {
  Exit exit = Exit::ok;
  const auto reply = askOnce({.path = "/p2p/bridge-info"}, options, console, exit);
  if (!reply) return exit;
  const auto info = objectIn(*reply, console);
  if (!info) return Exit::refused;
  const auto version = stringMember(*info, "version");
  if (!version) return console.fail(Exit::refused, "The helper named no build number.");
  console.say("info", "The helper is build " + printable(*version) + ".",
              {{"version", printable(*version)}});
  return Exit::ok;
}

Exit getPath(const Options& options, const Console& console) {
  Exit exit = Exit::ok;
  const auto reply = askOnce({.path = options.operands[0]}, options, console, exit);
  return reply ? printReply(*reply, options.output, console) : exit;
}

Exit postFile(const Options& options, const Console& console) {
  Request request{.path = options.operands[0], .method = options.method};
  if (options.operands.size() > 1) {
    const std::string& file = options.operands[1];
    const auto text = file == "-" ? readStandardInput(kMostBody) : readFile(file, kMostBody);
    if (!text) {
      return console.fail(Exit::usage, file + " cannot be read or is larger than 16 MB.");
    }
    request.body = toBytes(*text);
    request.contentType = options.contentType;
  }
  Exit exit = Exit::ok;
  const auto reply = askOnce(request, options, console, exit);
  return reply ? printReply(*reply, options.output, console) : exit;
}

}  // namespace torvane::ipad
