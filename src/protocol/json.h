#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvane {

using JsonValue = boost::json::value;
using JsonObject = boost::json::object;
using JsonArray = boost::json::array;

inline constexpr std::size_t kJsonMaxDepth = 512;

// Strict RFC 8259 in strict UTF-8, at most kJsonMaxDepth levels deep and with at most `maxValues`
// values in all; none when the text is anything else. Decimal numbers are the nearest double; one
// too large for a double reads as null, so that it counts as missing wherever a number is asked
// for. An exponent beyond 32 bits is refused.
[[nodiscard]] std::optional<JsonValue> parseJson(std::string_view text,
                                                 std::size_t maxValues = SIZE_MAX);

// The same, for a text whose top level must be an object.
[[nodiscard]] std::optional<JsonObject> parseJsonObject(std::string_view text,
                                                        std::size_t maxValues = SIZE_MAX);

// Compact JSON; none when a string is not UTF-8 or a number is not finite.
[[nodiscard]] std::optional<std::string> serializeJson(const JsonObject& object);

// A JSON number whose value is exactly a signed 64-bit integer: 3 and 3.0 are, 3.5, true and "3"
// are not.
[[nodiscard]] std::optional<std::int64_t> jsonInteger(const JsonValue& value);

// None unless there is a value that is a text.
[[nodiscard]] std::optional<std::string> textOf(const std::optional<JsonValue>& value);

// A member of an object under each type; none when it is absent or of another type.
[[nodiscard]] std::optional<std::int64_t> integerMember(const JsonObject& object,
                                                        std::string_view key);
[[nodiscard]] std::optional<double> numberMember(const JsonObject& object, std::string_view key);
[[nodiscard]] std::optional<std::string> stringMember(const JsonObject& object,
                                                      std::string_view key);

}  // namespace torvane
