// Single requests.

#include "torvane_ipad/answers.h"
#include "torvane_ipad/commands.h"
#include "torvane_ipad/engine_session.h"
#include "torvane_ipad/printable.h"
#include "torvane_ipad/private_files.h"

namespace torvane::ipad {
namespace {

// A message carries at most 16 MiB; the rest is for the headers.
constexpr std::size_t kMostBody = 16 * 1024 * 1024 - 64 * 1024;

Exit askAndPrint(const Request& request, const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto reply = session.isOpen() ? session.ask(request) : std::nullopt;
  if (!reply) return session.exit();
  return printReply(*reply, session.problemOf(*reply), options.output, console);
}

}  // namespace

Exit showInfo(const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto info = session.isOpen() ? session.get("/p2p/bridge-info") : std::nullopt;
  if (!info) return session.exit();
  const auto version = stringMember(*info, "version");
  if (!version) return session.fail("The helper named no build number.");
  console.say("info", "The helper is build " + printable(*version) + ".",
              {{"version", printable(*version)}});
  return Exit::ok;
}

Exit getPath(const Options& options, const Console& console) {
  return askAndPrint({.path = options.operands[0]}, options, console);
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
    request.contentType = options.contentType.empty() ? "application/json" : options.contentType;
  }
  return askAndPrint(request, options, console);
}

}  // namespace torvane::ipad
