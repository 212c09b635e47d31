#include "torvane_show/notes.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

#include "platform/linux/private_file.h"
#include "protocol/json.h"
#include "protocol/utf8.h"

namespace torvane::show {
namespace {

constexpr std::size_t kLargestFile = 4 * 1024 * 1024;
constexpr std::size_t kMostValues = 200'000;
constexpr std::int64_t kNewestPdfpc = 2;

// As UTF-8 with single line feeds, and without a byte order mark.
std::string cleaned(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const bool isUtf8 = isValidUtf8(text);
  std::string result;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '\r' || byte == '\0') continue;
    if (isUtf8 || code < 0x80) {
      result += byte;
    } else {
      result += static_cast<char>(0xC0 | (code >> 6));
      result += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return result;
}

// Without empty lines around it, and not cut within a character.
std::string trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\n";
  const auto first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  text = text.substr(first, text.find_last_not_of(kBlank) - first + 1);
  std::size_t end = std::min(text.size(), kLongestNotes);
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end));
}

std::string_view takeLine(std::string_view& text) {
  const auto end = std::min(text.find('\n'), text.size());
  const auto line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line.substr(0, line.find_last_not_of(" \t") + 1);
}

// Of "### 3"
std::optional<std::size_t> pageOfHeading(std::string_view line) {
  if (!line.starts_with("### ")) return std::nullopt;
  line.remove_prefix(4);
  std::size_t page = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), page);
  if (error != std::errc() || end != line.data() + line.size() || page == 0) return std::nullopt;
  return page;
}

class Notes {
 public:
  explicit Notes(std::size_t count) : texts_(count) {}

  void set(std::size_t page, std::string_view text) {
    if (page >= 1 && page <= texts_.size()) texts_[page - 1] = trimmed(text);
  }
  [[nodiscard]] std::vector<std::string> take() { return std::move(texts_); }

 private:
  std::vector<std::string> texts_;
};

// Lines "### N", each followed by notes; whether there was one.
bool readHeadings(std::string_view text, Notes& notes) {
  std::optional<std::size_t> page;
  std::string gathered;
  bool any = false;
  while (!text.empty()) {
    const auto line = takeLine(text);
    const auto heading = pageOfHeading(line);
    if (heading) {
      if (page) notes.set(*page, gathered);
      page = heading;
      any = true;
      gathered.clear();
    } else if (page) {
      gathered.append(line).append("\n");
    }
  }
  if (page) notes.set(*page, gathered);
  return any;
}

void readBlocks(std::string_view text, Notes& notes) {
  std::size_t page = 1;
  std::string gathered;
  while (!text.empty()) {
    const auto line = takeLine(text);
    if (line == "---") {
      notes.set(page++, gathered);
      gathered.clear();
    } else {
      gathered.append(line).append("\n");
    }
  }
  notes.set(page, gathered);
}

void readPdfpcJson(std::string_view text, Notes& notes) {
  const auto object = parseJsonObject(text, kMostValues);
  if (!object || integerMember(*object, "pdfpcFormat").value_or(1) > kNewestPdfpc) return;
  const auto* pages = object->if_contains("pages");
  if (!pages || !pages->is_array()) return;
  for (const auto& page : pages->get_array()) {
    if (!page.is_object()) continue;
    const auto index = integerMember(page.get_object(), "idx");
    const auto note = stringMember(page.get_object(), "note");
    if (index && *index >= 0 && note) notes.set(static_cast<std::size_t>(*index) + 1, *note);
  }
}

// From the line after "[notes]" to the next section.
std::string_view sectionOfNotes(std::string_view text) {
  while (!text.empty() && takeLine(text) != "[notes]") continue;
  std::string_view rest = text;
  while (!rest.empty()) {
    const auto before = rest;
    const auto line = takeLine(rest);
    if (line.starts_with("[") && line.ends_with("]"))
      return text.substr(0, text.size() - before.size());
  }
  return text;
}

}  // namespace

std::vector<std::string> parsePdfpcNotes(std::string_view raw, std::size_t count) {
  Notes notes(count);
  const std::string text = cleaned(raw);
  if (trimmed(text).starts_with("{")) {
    readPdfpcJson(text, notes);
  } else {
    readHeadings(sectionOfNotes(text), notes);
  }
  return notes.take();
}

std::vector<std::string> parseTextNotes(std::string_view raw, std::size_t count) {
  Notes notes(count);
  const std::string text = cleaned(raw);
  if (!readHeadings(text, notes)) readBlocks(text, notes);
  return notes.take();
}

std::vector<std::string> notesBeside(const std::string& path, std::size_t count) {
  std::filesystem::path file(path);
  if (const auto text = readSmallFile(file.replace_extension(".pdfpc").string(), kLargestFile))
    return parsePdfpcNotes(*text, count);
  if (const auto text = readSmallFile(file.replace_extension(".txt").string(), kLargestFile))
    return parseTextNotes(*text, count);
  return std::vector<std::string>(count);
}

}  // namespace torvane::show
