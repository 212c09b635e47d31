#include "platform/linux/http_text.h"

#include <algorithm>

#include "protocol/utf8.h"

namespace torvane {
namespace {

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

bool isLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isTokenCharacter(char c) {
  constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
  return isLetterOrDigit(c) || kMarks.find(c) != std::string_view::npos;
}

}  // namespace

bool isHttpToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isTokenCharacter);
}

bool isHeaderValue(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return isControl(c) && c != '\t'; });
}

std::string utf8FromHeader(std::string_view value) {
  if (isValidUtf8(value)) return std::string(value);
  std::string text;
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

std::string asSentence(std::string_view text) {
  std::string sentence = utf8FromHeader(text);
  std::replace_if(sentence.begin(), sentence.end(), isControl, ' ');
  while (!sentence.empty() && (sentence.back() == ' ' || sentence.back() == '.')) {
    sentence.pop_back();
  }
  if (sentence.empty()) return "The transfer failed.";
  if (sentence.front() >= 'a' && sentence.front() <= 'z') {
    sentence.front() = static_cast<char>(sentence.front() - 'a' + 'A');
  }
  return sentence + ".";
}

}  // namespace torvane
