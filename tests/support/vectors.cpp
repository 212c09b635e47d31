#include "support/vectors.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "support/folders.h"

namespace torvane::test {
namespace {

int digitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

std::string withoutEscapes(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%' || i + 2 >= text.size()) {
      out += text[i];
      continue;
    }
    out += static_cast<char>(digitValue(text[i + 1]) * 16 + digitValue(text[i + 2]));
    i += 2;
  }
  return out;
}

VectorCase parseCase(const std::string& line) {
  const auto verdictEnd = line.find(' ');
  const auto nameStart = line.find_first_not_of(' ', verdictEnd);
  const auto colon = line.find(':', nameStart);
  const auto textStart = std::min(colon + 2, line.size());
  return {line.substr(0, verdictEnd), line.substr(nameStart, colon - nameStart),
          withoutEscapes(std::string_view(line).substr(textStart))};
}

}  // namespace

std::vector<VectorCase> readVectorCases(std::string_view name) {
  std::vector<VectorCase> cases;
  for (const auto& line : linesOf(readSourceFile("tests/vectors/" + std::string(name)))) {
    if (!line.empty() && line[0] != '#') cases.push_back(parseCase(line));
  }
  return cases;
}

std::string readSourceFile(std::string_view path) {
  const auto file = sourceFolder() / path;
  if (!std::filesystem::is_regular_file(file)) {
    std::fprintf(stderr, "cannot read %s\n", file.c_str());
    std::exit(EXIT_FAILURE);
  }
  return readFile(file);
}

std::optional<std::filesystem::path> outsideVectors(std::string_view name) {
  const auto folder = vectorsFolder();
  if (folder.empty() || !std::filesystem::exists(folder / name)) return std::nullopt;
  return folder / name;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

Bytes fromHex(std::string_view digits) {
  Bytes bytes;
  int high = -1;
  for (const char digit : digits) {
    const int value = digitValue(digit);
    if (value < 0) continue;
    if (high < 0) {
      high = value;
    } else {
      bytes.push_back(static_cast<std::uint8_t>(high * 16 + value));
      high = -1;
    }
  }
  return bytes;
}

std::string toHex(ByteView bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0x0FU];
  }
  return text;
}

}  // namespace torvane::test
