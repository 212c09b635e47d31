#include "torvane_ipad/answers.h"

#include <unistd.h>

#include <cstdio>

#include "protocol/base64.h"
#include "protocol/utf8.h"
#include "torvane_ipad/output_file.h"
#include "torvane_ipad/printable.h"

namespace torvane::ipad {
namespace {

void writeBytes(std::string_view bytes) {
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  std::fflush(stdout);
}

// A terminal obeys some characters, so they do not reach it from outside.
Exit writeToTerminal(std::string_view body, const Console& console) {
  if (!isValidUtf8(body) || body.find('\0') != body.npos) {
    return console.fail(Exit::usage,
                        "The answer is no text. Save it with --output FILE, or redirect it.");
  }
  writeBytes(printable(body, true));
  if (!body.empty() && !body.ends_with('\n')) writeBytes("\n");
  return Exit::ok;
}

void sayJson(const Reply& reply, const Console& console) {
  JsonObject fact{{"status", reply.status}, {"contentType", printable(reply.contentType)}};
  if (reply.error) fact["error"] = printable(*reply.error);
  if (auto body = parseJson(asText(reply.body))) {
    fact["body"] = std::move(*body);
  } else {
    fact["bodyBase64"] = base64Encode(reply.body);
  }
  console.say("reply", "", fact);
}

}  // namespace

Exit printReply(const Reply& reply, const std::string& problem, const std::string& file,
                const Console& console) {
  const std::string_view body = asText(reply.body);
  Exit exit = Exit::ok;
  if (!file.empty() && problem.empty()) {
    if (!writeOutput(file, body)) exit = console.fail(Exit::usage, cannotWrite(file));
  } else if (console.isJson()) {
    sayJson(reply, console);
  } else if (::isatty(STDOUT_FILENO) != 0) {
    exit = writeToTerminal(body, console);
  } else {
    writeBytes(body);
  }
  return problem.empty() ? exit : console.fail(Exit::refused, problem);
}

}  // namespace torvane::ipad
