#include "ink/ink_answer.h"

#include <utility>

#include "protocol/json.h"

namespace torvane {
namespace {

std::optional<Point> readPoint(const JsonObject& event) {
  const auto x = numberMember(event, "x");
  const auto y = numberMember(event, "y");
  if (!x || !y) return std::nullopt;
  return Point{*x, *y};
}

// BeginStroke or AppendPoint.
template <typename Kind>
std::optional<InkEvent> readStrokePoint(const JsonObject& event) {
  const auto id = integerMember(event, "id");
  const auto at = readPoint(event);
  if (!id || !at) return std::nullopt;
  return Kind{*id, *at};
}

std::optional<InkEvent> readDeletion(const JsonObject& event) {
  const auto* value = event.if_contains("ids");
  const auto* ids = value != nullptr ? value->if_array() : nullptr;
  if (ids == nullptr) return std::nullopt;
  DeleteStrokes deletion;
  deletion.ids.reserve(ids->size());
  for (const auto& element : *ids) {
    const auto id = jsonInteger(element);
    if (!id) return std::nullopt;
    deletion.ids.push_back(*id);
  }
  return deletion;
}

std::optional<InkEvent> readEvent(const JsonObject& event) {
  const auto kind = stringMember(event, "t");
  if (kind == "begin") return readStrokePoint<BeginStroke>(event);
  if (kind == "pt") return readStrokePoint<AppendPoint>(event);
  if (kind == "del") return readDeletion(event);
  if (kind == "clear") return ClearInk{};
  if (kind == "laser") {
    const auto at = readPoint(event);
    return at ? std::optional<InkEvent>(PlaceLaser{*at}) : std::nullopt;
  }
  if (kind == "laserend") return EndLaser{};
  return std::nullopt;
}

// Deletions in a row become one, for each goes through the whole drawing order.
void add(InkEvent event, std::vector<InkEvent>& events) {
  const auto* deletion = std::get_if<DeleteStrokes>(&event);
  auto* last = events.empty() ? nullptr : std::get_if<DeleteStrokes>(&events.back());
  if (deletion != nullptr && last != nullptr) {
    last->ids.insert(last->ids.end(), deletion->ids.begin(), deletion->ids.end());
  } else {
    events.push_back(std::move(event));
  }
}

// One element that is not an object makes it another type than a list of events.
std::vector<InkEvent> readEvents(const JsonValue* value) {
  const auto* array = value != nullptr ? value->if_array() : nullptr;
  if (array == nullptr) return {};
  std::vector<InkEvent> events;
  events.reserve(array->size());
  for (const auto& element : *array) {
    const auto* object = element.if_object();
    if (object == nullptr) return {};
    if (auto event = readEvent(*object)) add(std::move(*event), events);
  }
  return events;
}

}  // namespace

std::optional<InkAnswer> parseInkAnswer(ByteView body) {
  const auto object = parseJsonObject(asText(body));
  const auto seq = object ? integerMember(*object, "seq") : std::nullopt;
  if (!seq) return std::nullopt;

  InkAnswer answer;
  answer.seq = *seq;
  answer.events = readEvents(object->if_contains("events"));
  const auto* presenting = object->if_contains("presenting");
  answer.presenting = presenting != nullptr && presenting->is_bool() && presenting->get_bool();
  answer.aspect = numberMember(*object, "aspect").value_or(answer.aspect);
  answer.overlayV = integerMember(*object, "overlayV").value_or(answer.overlayV);
  return answer;
}

}  // namespace torvane
