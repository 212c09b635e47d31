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
  if (integerMember(state, "count") == 0) return "No presentation is open";
  std::string line = "Slide " + *slide;
  if (const auto count = number(state, "count")) line += " of " + *count;
  const auto steps = integerMember(state, "steps").value_or(0);
  if (steps > 0)
    line += ", step " + number(state, "step").value_or("0") + " of " + std::to_string(steps);
  if (const auto title = text(state, "title"); title && !title->empty()) line += ": " + *title;
  return isTrue(state, "atEnd") ? line + " (the show is past it)" : line;
}

std::optional<std::string> showLine(const JsonObject& state) {
  const auto* presenting = state.if_contains("presenting");
  if (presenting == nullptr || !presenting->is_bool()) return std::nullopt;
  if (!presenting->get_bool()) return "The slide show is not running";
  return isTrue(state, "blank") ? "The slide show is running, and its screen is dark"
                                : "The slide show is running";
}

std::optional<std::string> problemLine(const JsonObject& state) {
  return text(state, "problem");
}

// "57 of 200"; empty where there is no such progress.
std::string howFar(const JsonObject& progress) {
  const auto done = number(progress, "done");
  const auto total = number(progress, "total");
  return done && total ? *done + " of " + *total : "";
}

std::optional<std::string> progressLine(const JsonObject& state) {
  const JsonObject progress = objectMember(state, "progress");
  const std::string task = textOf(progress, "task");
  const std::string far = howFar(progress);
  if (task.empty() || far.empty()) return std::nullopt;
  if (task == "slides") return "Reading the slides: " + far;
  if (task == "pictures") return "Making small pictures: " + far;
  return (task == "jump" ? "On the way to another slide" : task) + ": " + far;
}

std::string exportProgress(const JsonObject& progress) {
  const std::string far = howFar(progress);
  const bool isInk = textOf(progress, "task") == "ink";
  return (isInk ? "Drawing the ink on the PDF" : "Making the PDF") +
         (far.empty() ? " …" : ": " + far);
}

std::optional<std::string> exportLine(const JsonObject& state) {
  auto words = describeExport(objectMember(state, "export"));
  return words.empty() ? std::nullopt : std::optional(std::move(words));
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
    problemLine, deckLine,     slideLine,  showLine,  strokesLine,
    overlayLine, progressLine, exportLine, engineLine};

}  // namespace

std::string describePlace(const JsonObject& state) {
  const auto slide = slideLine(state);
  if (!slide) return "The engine does not say at which slide the presentation is";
  return isTrue(state, "blank") ? *slide + " (the screen is dark)" : *slide;
}

std::string describeExport(const JsonObject& made) {
  const std::string state = textOf(made, "state");
  const auto sentence = text(made, "sentence");
  if (state == "done") return "The PDF is ready";
  if (state == "running") return exportProgress(objectMember(made, "progress"));
  if (state == "waiting") return sentence.value_or("The PDF is made when the slide show ends.");
  return state == "failed" ? sentence.value_or("No PDF could be made.") : "";
}

bool isTrue(const JsonObject& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value != nullptr && value->is_bool() && value->get_bool();
}

std::string textOf(const JsonObject& object, std::string_view key) {
  return text(object, key).value_or("");
}

JsonObject objectMember(const JsonObject& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value != nullptr && value->is_object() ? value->get_object() : JsonObject{};
}

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
