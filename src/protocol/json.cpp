#include "protocol/json.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value_stack.hpp>
#include <cmath>
#include <limits>

#include "protocol/decimal.h"
#include "protocol/utf8.h"

namespace torvane {
namespace {

namespace json = boost::json;

// Builds a value as json::parse does, but converts decimal numbers from their text: the library's
// own conversion is one unit in the last place off for many of them.
struct ExactDecimalHandler {
  static constexpr std::size_t max_object_size = json::object::max_size();
  static constexpr std::size_t max_array_size = json::array::max_size();
  static constexpr std::size_t max_key_size = json::string::max_size();
  static constexpr std::size_t max_string_size = json::string::max_size();

  using Error = boost::system::error_code;
  using Text = json::string_view;

  json::value_stack stack;
  std::string number;
  std::size_t valuesLeft = 0;

  // Ends the parsing when there are too many values.
  bool count(Error& error) {
    if (valuesLeft == 0) {
      error = json::error::array_too_large;
      return false;
    }
    --valuesLeft;
    return true;
  }

  bool on_document_begin(Error&) {
    stack.reset();
    return true;
  }
  bool on_document_end(Error&) { return true; }
  bool on_object_begin(Error&) { return true; }
  bool on_object_end(std::size_t n, Error& error) {
    stack.push_object(n);
    return count(error);
  }
  bool on_array_begin(Error&) { return true; }
  bool on_array_end(std::size_t n, Error& error) {
    stack.push_array(n);
    return count(error);
  }
  bool on_key_part(Text part, std::size_t, Error&) {
    stack.push_chars(part);
    return true;
  }
  bool on_key(Text part, std::size_t, Error&) {
    stack.push_key(part);
    return true;
  }
  bool on_string_part(Text part, std::size_t, Error&) {
    stack.push_chars(part);
    return true;
  }
  bool on_string(Text part, std::size_t, Error& error) {
    stack.push_string(part);
    return count(error);
  }
  bool on_number_part(Text part, Error&) {
    number.append(part.data(), part.size());
    return true;
  }
  bool on_int64(std::int64_t value, Text, Error& error) {
    number.clear();
    stack.push_int64(value);
    return count(error);
  }
  bool on_uint64(std::uint64_t value, Text, Error& error) {
    number.clear();
    stack.push_uint64(value);
    return count(error);
  }
  bool on_double(double, Text part, Error& error) {
    number.append(part.data(), part.size());
    if (const auto value = parseDecimal(number)) {
      stack.push_double(*value);
    } else {
      stack.push_null();
    }
    number.clear();
    return count(error);
  }
  bool on_bool(bool value, Error& error) {
    stack.push_bool(value);
    return count(error);
  }
  bool on_null(Error& error) {
    stack.push_null();
    return count(error);
  }
  bool on_comment_part(Text, Error&) { return true; }
  bool on_comment(Text, Error&) { return true; }
};

bool isSerializable(const JsonValue& value) {
  if (const auto* text = value.if_string()) return isValidUtf8({text->data(), text->size()});
  if (const auto* number = value.if_double()) return std::isfinite(*number);
  if (const auto* array = value.if_array()) {
    for (const auto& element : *array) {
      if (!isSerializable(element)) return false;
    }
  }
  if (const auto* object = value.if_object()) {
    for (const auto& member : *object) {
      if (!isValidUtf8({member.key().data(), member.key().size()})) return false;
      if (!isSerializable(member.value())) return false;
    }
  }
  return true;
}

const JsonValue* memberOf(const JsonObject& object, std::string_view key) {
  return object.if_contains({key.data(), key.size()});
}

}  // namespace

std::optional<JsonValue> parseJson(std::string_view text, std::size_t maxValues) {
  json::parse_options options;
  options.max_depth = kJsonMaxDepth;
  json::basic_parser<ExactDecimalHandler> parser(options);
  parser.handler().valuesLeft = maxValues;
  boost::system::error_code error;
  const std::size_t read = parser.write_some(false, text.data(), text.size(), error);
  if (error || read != text.size()) return std::nullopt;
  return parser.handler().stack.release();
}

std::optional<JsonObject> parseJsonObject(std::string_view text, std::size_t maxValues) {
  auto value = parseJson(text, maxValues);
  if (!value || !value->is_object()) return std::nullopt;
  return std::move(value->get_object());
}

std::optional<std::string> serializeJson(const JsonObject& object) {
  for (const auto& member : object) {
    if (!isValidUtf8({member.key().data(), member.key().size()})) return std::nullopt;
    if (!isSerializable(member.value())) return std::nullopt;
  }
  return json::serialize(object);
}

std::optional<std::int64_t> jsonInteger(const JsonValue& value) {
  if (const auto* number = value.if_int64()) return *number;
  const auto* number = value.if_double();
  // 2^63 is exact as a double; the largest integer below it is what still fits.
  constexpr double kLimit = 9223372036854775808.0;
  if (number == nullptr || !(*number >= -kLimit && *number < kLimit)) return std::nullopt;
  if (std::trunc(*number) != *number) return std::nullopt;
  return static_cast<std::int64_t>(*number);
}

std::optional<std::string> textOf(const std::optional<JsonValue>& value) {
  const auto* text = value ? value->if_string() : nullptr;
  if (text == nullptr) return std::nullopt;
  return std::string(*text);
}

std::optional<std::int64_t> integerMember(const JsonObject& object, std::string_view key) {
  const auto* value = memberOf(object, key);
  return value != nullptr ? jsonInteger(*value) : std::nullopt;
}

std::optional<double> numberMember(const JsonObject& object, std::string_view key) {
  const auto* value = memberOf(object, key);
  if (value == nullptr || !value->is_number()) return std::nullopt;
  return value->to_number<double>();
}

std::optional<std::string> stringMember(const JsonObject& object, std::string_view key) {
  const auto* value = memberOf(object, key);
  const auto* text = value != nullptr ? value->if_string() : nullptr;
  if (text == nullptr) return std::nullopt;
  return std::string(text->data(), text->size());
}

}  // namespace torvane
