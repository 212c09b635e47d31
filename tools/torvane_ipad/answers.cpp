#include "torvane_ipad/answers.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "protocol/base64.h"
#include "protocol/utf8.h"
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

Exit writeToFile(std::string_view body, const std::string& file, const Console& console) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(body.data(), static_cast<std::streamsize>(body.size()));
  stream.close();
  if (!stream) return console.fail(Exit::usage, "The answer cannot be written to " + file + ".");
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

std::string problemOf(const Reply& reply) {
  if (reply.error) return "The helper could not reach the engine: " + printable(*reply.error) + ".";
  if (reply.status < 400) return {};
  const auto body = parseJsonObject(asText(reply.body));
  const auto why = body ? stringMember(*body, "error") : std::nullopt;
  return "The engine answered with status " + std::to_string(reply.status) +
         (why ? ": " + printable(*why) + "." : ".");
}

Exit printReply(const Reply& reply, const std::string& file, const Console& console) {
  const std::string_view body = asText(reply.body);
  const std::string problem = problemOf(reply);
  Exit exit = Exit::ok;
  if (!file.empty() && problem.empty()) {
    exit = writeToFile(body, file, console);
  } else if (console.isJson()) {
    sayJson(reply, console);
  } else if (::isatty(STDOUT_FILENO) != 0) {
    exit = writeToTerminal(body, console);
  } else {
    writeBytes(body);
  }
  return problem.empty() ? exit : console.fail(Exit::refused, problem);
}

std::optional<JsonObject> objectIn(const Reply& reply, const Console& console) {
  std::string problem = problemOf(reply);
  auto object = parseJsonObject(asText(reply.body));
  if (problem.empty() && object) return object;
  if (problem.empty()) problem = "The answer is no JSON object.";
  (void)console.fail(Exit::refused, problem);
  return std::nullopt;
}

}  // namespace torvane::ipad
