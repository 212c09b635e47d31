// Any bytes as JSON: what is read is UTF-8, and what is written from it reads the same.

#include <boost/json/serialize.hpp>

#include "protocol/bytes.h"
#include "protocol/json.h"
#include "protocol/utf8.h"
#include "require.h"

using namespace torvane;
using fuzz::require;

namespace {

void readMembers(const JsonObject& object) {
  for (const auto& member : object) {
    const std::string key(member.key());
    const auto integer = integerMember(object, key);
    const auto number = numberMember(object, key);
    require(!integer || (number && *number == static_cast<double>(*integer)),
            "an integer is a number");
    require(!(number && stringMember(object, key)), "a number is no text");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = asText({data, size});
  const auto value = parseJson(text);
  const auto object = parseJsonObject(text);
  require(object.has_value() == (value && value->is_object()), "an object is a value");
  if (!value) return 0;
  require(isValidUtf8(text), "what is read is UTF-8");

  const std::string written = boost::json::serialize(*value);
  const auto again = parseJson(written);
  require(again && *again == *value, "what was written reads the same");
  require(boost::json::serialize(*again) == written, "and is written the same");
  if (object) {
    require(serializeJson(*object) == written, "a header is written alike");
    readMembers(*object);
  }
  return 0;
}
