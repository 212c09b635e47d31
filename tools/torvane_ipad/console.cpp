#include "torvane_ipad/console.h"

#include <cstdio>

namespace torvane::ipad {
namespace {

void writeLine(std::FILE* stream, const std::string& line) {
  std::fprintf(stream, "%s\n", line.c_str());
  std::fflush(stream);
}

void writeJson(const std::string& event, const JsonObject& fact) {
  JsonObject object{{"event", event}};
  for (const auto& member : fact) object[member.key()] = member.value();
  if (const auto text = serializeJson(object)) writeLine(stdout, *text);
}

}  // namespace

void Console::say(const std::string& event, const std::string& sentence,
                  const JsonObject& fact) const {
  if (json_) {
    writeJson(event, fact);
  } else {
    writeLine(stdout, sentence);
  }
}

void Console::note(const std::string& sentence) const {
  if (json_) {
    writeJson("note", {{"text", sentence}});
  } else {
    writeLine(stderr, sentence);
  }
}

Exit Console::fail(Exit exit, const std::string& sentence) const {
  if (json_) {
    writeJson("error", {{"text", sentence}, {"exit", static_cast<int>(exit)}});
  } else {
    writeLine(stderr, "torvane-ipad: " + sentence);
  }
  return exit;
}

}  // namespace torvane::ipad
