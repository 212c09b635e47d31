#include "torvane_ipad/state_text.h"

#include <optional>
#include <string_view>

#include "torvane_ipad/printable.h"

namespace torvane::ipad {
namespace {

std::optional<std::string> text(const JsonObject& state, std::string_view key) {
  const auto value = stringMember(state, key);
  return value ? std::optional(printable(*value)) : std::nullopt;
}

std::optional<std::string> number(const JsonObject& state, std::string_view key) {
  const auto value = integerMember(state, key);
  return value ? std::optional(std::to_string(*value)) : std::nullopt;
}

std::optional<std::string> deckLine(const JsonObject& state) {
  const auto deck = text(state, "deck");
  return deck ? std::optional("Presentation: " + *deck) : std::nullopt;
}

std::optional<std::string> slideLine(const JsonObject& state) {
  const auto slide = number(state, "slide");
  if (!slide) return std::nullopt;
  std::string line = "Slide " + *slide;
  if (const auto count = number(state, "count")) line += " of " + *count;
  if (const auto title = text(state, "title"); title && !title->empty()) line += ": " + *title;
  return line;
}

std::optional<std::string> showLine(const JsonObject& state) {
  const auto* presenting = state.if_contains("presenting");
  if (presenting == nullptr || !presenting->is_bool()) return std::nullopt;
  return presenting->get_bool() ? "The slide show is running" : "The slide show is not running";
}

std::optional<std::string> strokesLine(const JsonObject& state) {
  const auto strokes = number(state, "strokes");
  return strokes ? std::optional("Pen strokes on the slide: " + *strokes) : std::nullopt;
}

std::optional<std::string> overlayLine(const JsonObject& state) {
  const auto version = number(state, "overlayV");
  return version ? std::optional("Overlay picture: version " + *version) : std::nullopt;
}

std::optional<std::string> engineLine(const JsonObject& state) {
  const auto version = text(state, "version");
  return version ? std::optional("Engine: version " + *version) : std::nullopt;
}

constexpr std::optional<std::string> (*kLines[])(const JsonObject&) = {
    deckLine, slideLine, showLine, strokesLine, overlayLine, engineLine};

}  // namespace

std::vector<std::string> describeState(const JsonObject& state) {
  std::vector<std::string> lines;
  for (const auto& line : kLines) {
    if (auto words = line(state)) lines.push_back(std::move(*words));
  }
  return lines;
}

std::vector<std::string> describeChanges(const JsonObject& before, const JsonObject& after) {
  std::vector<std::string> lines;
  for (const auto& line : kLines) {
    auto words = line(after);
    if (words && words != line(before)) lines.push_back(std::move(*words));
  }
  return lines;
}

}  // namespace torvane::ipad
