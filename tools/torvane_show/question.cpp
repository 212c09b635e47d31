#include "torvane_show/question.h"

#include <algorithm>
#include <array>
#include <limits>

#include "protocol/json.h"

namespace torvane::show {
namespace {

using Kind = Question::Kind;

struct Form {
  std::string_view name;
  Kind kind;
  std::size_t arguments;
};

constexpr std::array<Form, 8> kForms = {{{"look", Kind::kLook, 0},
                                         {"next", Kind::kNext, 0},
                                         {"previous", Kind::kPrevious, 0},
                                         {"go_to", Kind::kGoTo, 1},
                                         {"end", Kind::kEnd, 0},
                                         {"blank", Kind::kBlank, 1},
                                         {"page", Kind::kPage, 1},
                                         {"picture", Kind::kPicture, 2}}};
constexpr int kNarrowest = 16;
constexpr int kWidest = 4096;

// What is no number of a page counts as one that there is not.
int pageNumber(std::int64_t number) {
  return number > 0 && number <= std::numeric_limits<int>::max() ? static_cast<int>(number) : 0;
}

bool readArguments(const JsonArray& arguments, Question& question) {
  if (arguments.empty()) return true;
  if (question.kind == Kind::kBlank) {
    if (!arguments[0].is_bool()) return false;
    question.on = arguments[0].get_bool();
    return true;
  }
  const auto page = jsonInteger(arguments[0]);
  if (!page) return false;
  question.page = pageNumber(*page);
  if (arguments.size() == 1) return true;
  const auto width = jsonInteger(arguments[1]);
  if (!width || *width < kNarrowest || *width > kWidest) return false;
  question.width = static_cast<int>(*width);
  return true;
}

}  // namespace

std::optional<Question> parseQuestion(std::string_view line) {
  if (line.size() > kLongestQuestion) return std::nullopt;
  const auto object = parseJsonObject(line);
  if (!object) return std::nullopt;
  const auto id = integerMember(*object, "id");
  const auto name = stringMember(*object, "do");
  if (!id || !name) return std::nullopt;
  const auto form = std::find_if(kForms.begin(), kForms.end(),
                                 [&name](const Form& one) { return one.name == *name; });
  if (form == kForms.end()) return std::nullopt;
  Question question;
  question.id = *id;
  question.kind = form->kind;
  const auto* with = object->if_contains("with");
  if (with && !with->is_array()) return std::nullopt;
  const JsonArray arguments = with ? with->get_array() : JsonArray();
  if (arguments.size() != form->arguments) return std::nullopt;
  return readArguments(arguments, question) ? std::optional(question) : std::nullopt;
}

}  // namespace torvane::show
