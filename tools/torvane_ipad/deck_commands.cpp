// What there is to show: presentations, slides, notes.

#include <algorithm>

#include "torvane_ipad/commands.h"
#include "torvane_ipad/engine_session.h"
#include "torvane_ipad/printable.h"
#include "torvane_ipad/state_text.h"
#include "torvane_ipad/state_wait.h"

namespace torvane::ipad {
namespace {

std::vector<JsonObject> objectsIn(const JsonObject& object, std::string_view key) {
  std::vector<JsonObject> found;
  const auto* list = object.if_contains(key);
  if (list == nullptr || !list->is_array()) return found;
  for (const JsonValue& value : list->get_array()) {
    if (value.is_object()) found.push_back(value.get_object());
  }
  return found;
}

// Why there is nothing to list, from the state.
std::string whyNothing(const JsonObject& state) {
  const std::string problem = textOf(state, "problem");
  return problem.empty() ? "No presentation is open at the computer. Open one there." : problem;
}

bool isBeingRead(const JsonObject& state) {
  return textOf(objectMember(state, "progress"), "task") == "slides";
}

std::string markFor(bool isCurrent) {
  return isCurrent ? "> " : "  ";
}

std::string slideLine(const JsonObject& slide, std::int64_t current, std::size_t width) {
  const auto number = integerMember(slide, "slide").value_or(0);
  const std::string digits = std::to_string(number);
  const std::string title = textOf(slide, "title");
  return markFor(number == current) + std::string(width - std::min(width, digits.size()), ' ') +
         digits + "  " + (title.empty() ? "(no title)" : title) +
         (isTrue(slide, "hidden") ? " (hidden)" : "");
}

std::string documentLine(const JsonObject& document, const std::string& current) {
  const std::string id = textOf(document, "id");
  return markFor(id == current) + textOf(document, "title") + "  [" + id + "]" +
         (isTrue(document, "presenting") ? ", its show is running" : "");
}

using IsMeant = bool (*)(const JsonObject& document, const std::string& name);

bool hasId(const JsonObject& document, const std::string& name) {
  return stringMember(document, "id") == name;
}
bool hasTitle(const JsonObject& document, const std::string& name) {
  return stringMember(document, "title") == name;
}
bool hasTitleWithBeginning(const JsonObject& document, const std::string& name) {
  return !name.empty() && stringMember(document, "title").value_or("").starts_with(name);
}

// The ids of those that are meant: the one with this id, else those with this title, else those
// whose title begins like this.
std::vector<std::string> idsOf(const std::vector<JsonObject>& documents, const std::string& name) {
  std::vector<std::string> found;
  for (const IsMeant isMeant : {hasId, hasTitle, hasTitleWithBeginning}) {
    for (const JsonObject& document : documents) {
      const auto id = stringMember(document, "id");
      if (id && isMeant(document, name)) found.push_back(*id);
    }
    if (!found.empty()) break;
  }
  return found;
}

Exit listDocuments(EngineSession& session, const JsonObject& answer, const Console& console) {
  const auto documents = objectsIn(answer, "documents");
  if (console.isJson()) {
    console.say("documents", "", answer);
    return Exit::ok;
  }
  if (documents.empty()) {
    const auto state = session.get("/api/state");
    return state ? session.fail(whyNothing(*state)) : session.exit();
  }
  const std::string current = textOf(answer, "document");
  for (const JsonObject& document : documents) {
    console.say("documents", documentLine(document, current), {});
  }
  return Exit::ok;
}

Exit choose(EngineSession& session, const std::string& id, const Console& console) {
  const auto answer = session.post("/api/document", {{"document", id}});
  const auto isChosen = [&](const JsonObject& state) {
    return stringMember(state, "document") == id;
  };
  const auto state = answer ? stateOnceDone(session, *answer, isChosen) : std::nullopt;
  if (!state) return session.exit();
  if (!isChosen(*state)) {
    return session.fail("\"" + textOf(*state, "deck") + "\" is driven still. Close it, or bring " +
                        "the other one to the front at the computer.");
  }
  console.say("document",
              "\"" + textOf(*state, "deck") + "\" is driven now. " + describePlace(*state),
              {{"state", *state}});
  return Exit::ok;
}

}  // namespace

Exit chooseDocument(const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto answer = session.isOpen() ? session.get("/api/documents") : std::nullopt;
  if (!answer) return session.exit();
  if (options.operands.empty()) return listDocuments(session, *answer, console);
  const std::string& name = options.operands[0];
  const auto ids = idsOf(objectsIn(*answer, "documents"), name);
  if (ids.empty()) {
    return session.fail("No presentation \"" + name +
                        "\" is open. \"torvane-ipad documents\" lists "
                        "those that are.");
  }
  if (ids.size() > 1) {
    return session.fail("More than one presentation is called \"" + name +
                        "\". Give its id, which \"torvane-ipad documents\" shows in brackets.");
  }
  return choose(session, ids[0], console);
}

Exit listSlides(const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto state = session.isOpen() ? session.get("/api/state") : std::nullopt;
  const auto answer = state ? session.get("/api/slides") : std::nullopt;
  if (!answer) return session.exit();
  const auto slides = objectsIn(*answer, "slides");
  const auto current = integerMember(*state, "slide").value_or(0);
  if (slides.empty()) return session.fail(whyNothing(*state));
  if (console.isJson()) {
    JsonObject fact = *answer;
    fact["current"] = current;
    console.say("slides", "", fact);
    return Exit::ok;
  }
  const std::size_t width = std::to_string(slides.size()).size();
  for (const JsonObject& slide : slides)
    console.say("slides", slideLine(slide, current, width), {});
  // Such as why these are the slides of the sample.
  if (const auto problem = textOf(*state, "problem"); !problem.empty()) console.note(problem);
  if (isBeingRead(*state)) {
    console.note("The presentation is being read still; some titles are missing.");
  }
  return Exit::ok;
}

Exit showNotes(const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto state = session.isOpen() ? session.get("/api/state") : std::nullopt;
  if (!state) return session.exit();
  const auto count = integerMember(*state, "count").value_or(0);
  const auto slide = options.slide > 0 ? options.slide : integerMember(*state, "slide").value_or(0);
  const std::string number = std::to_string(slide);
  if (count == 0) return session.fail(whyNothing(*state));
  if (slide > count) {
    return session.fail("There is no slide " + number + ": the last one is " +
                        std::to_string(count) + ".");
  }
  const auto answer = session.get("/api/slides/" + number + "/notes");
  if (!answer) return session.exit();
  const std::string notes = printable(stringMember(*answer, "notes").value_or(""), true);
  if (notes.empty() && isBeingRead(*state)) {
    return session.fail("The presentation is being read still. Try again in a moment.");
  }
  if (notes.empty() && !console.isJson()) {
    console.note("Slide " + number + " has no notes.");
    return Exit::ok;
  }
  console.say("notes", notes, {{"slide", slide}, {"notes", notes}});
  return Exit::ok;
}

}  // namespace torvane::ipad
