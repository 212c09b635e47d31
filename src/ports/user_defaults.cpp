#include "ports/user_defaults.h"

#include <algorithm>
#include <string_view>

namespace torvane {
namespace {

bool beginsAsTrue(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  constexpr std::string_view kTrue = "YyTt123456789";
  return !text.empty() && kTrue.find(text.front()) != std::string_view::npos;
}

}  // namespace

bool countsAsTrue(const JsonValue& value) {
  if (const auto* text = value.if_string()) return beginsAsTrue({text->data(), text->size()});
  if (const auto* flag = value.if_bool()) return *flag;
  return value.is_number() && value.to_number<double>() != 0;
}

}  // namespace torvane
