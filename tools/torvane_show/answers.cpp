#include "torvane_show/answers.h"

#include "protocol/json.h"

namespace torvane::show {
namespace {

// A text from a file that is not UTF-8 is left out with the whole answer; readers see to that.
std::string line(std::int64_t id, const char* name, JsonValue what) {
  const auto text = serializeJson(JsonObject{{"id", id}, {name, std::move(what)}});
  return text ? *text + "\n" : refusal(id, "This cannot be told as text.");
}

}  // namespace

std::string lookAnswer(std::int64_t id, const Deck& deck, const Position& shown, bool presenting) {
  const auto page = static_cast<std::size_t>(shown.page - 1);
  return line(id, "answer",
              JsonObject{{"path", deck.path},
                         {"title", deck.title},
                         {"revision", deck.revision},
                         {"slide", shown.page},
                         {"count", deck.count()},
                         {"aspect", deck.pages.at(page).aspect},
                         {"presenting", presenting},
                         {"blank", shown.isBlack},
                         {"at_end", shown.atEnd}});
}

std::string pageAnswer(std::int64_t id, const PageFacts& page) {
  return line(id, "answer",
              JsonObject{{"title", page.title}, {"notes", page.notes}, {"aspect", page.aspect}});
}

std::string pictureAnswer(std::int64_t id, std::string_view picture) {
  return line(id, "answer", JsonObject{{"picture", picture}});
}

std::string doneAnswer(std::int64_t id) {
  return line(id, "answer", JsonObject());
}

std::string refusal(std::int64_t id, std::string_view why) {
  return line(id, "refused", JsonValue(why));
}

}  // namespace torvane::show
