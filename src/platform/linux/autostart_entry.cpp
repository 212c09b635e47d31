#include "platform/linux/autostart_entry.h"

#include <algorithm>

namespace torvane {
namespace {

// Values are written with escapes of their own, and within Exec once more with a shell's.
std::string escapedValue(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '\\':
        result += "\\\\";
        break;
      case '\n':
        result += "\\n";
        break;
      case '\t':
        result += "\\t";
        break;
      case '\r':
        result += "\\r";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string unescapedValue(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      result += text[i];
      continue;
    }
    switch (text[++i]) {
      case 's':
        result += ' ';
        break;
      case 'n':
        result += '\n';
        break;
      case 't':
        result += '\t';
        break;
      case 'r':
        result += '\r';
        break;
      default:
        result += text[i];
    }
  }
  return result;
}

std::string quotedArgument(std::string_view text) {
  constexpr std::string_view kMarked = "\"`$\\";
  std::string result = "\"";
  for (const char c : text) {
    if (kMarked.find(c) != std::string_view::npos) result += '\\';
    result += c;
    if (c == '%') result += c;
  }
  return result + '"';
}

std::vector<std::string> splitCommand(std::string_view line) {
  std::vector<std::string> arguments;
  bool isInside = false;
  bool isQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == ' ' && !isQuoted) {
      isInside = false;
      continue;
    }
    if (!isInside) arguments.emplace_back();
    isInside = true;
    if (c == '"') {
      isQuoted = !isQuoted;
      continue;
    }
    const bool isPair =
        i + 1 < line.size() && ((c == '\\' && isQuoted) || (c == '%' && line[i + 1] == '%'));
    if (isPair) ++i;
    arguments.back() += line[i];
  }
  return arguments;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r";
  const auto first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

void takeKey(AutostartEntry& entry, std::string_view key, std::string_view value) {
  if (key == "Exec") entry.command = splitCommand(unescapedValue(value));
  if (key == "Hidden" && value == "true") entry.isSwitchedOff = true;
  if (key == "X-GNOME-Autostart-enabled" && value == "false") entry.isSwitchedOff = true;
}

}  // namespace

std::string autostartEntry(const std::string& program) {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Torvane P2P Helper\n"
         "Comment=Lets an iPad run the presentation on this computer\n"
         "Exec=" +
         escapedValue(quotedArgument(program)) +
         "\nTryExec=" +  // a program that was removed is not missed at login
         escapedValue(program) +
         "\n"
         "Icon=torvane-p2p-helper\n"
         "Terminal=false\n";
}

AutostartEntry parseAutostartEntry(std::string_view text) {
  AutostartEntry entry;
  bool isInGroup = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.starts_with('[')) isInGroup = line == "[Desktop Entry]";
    const auto equals = line.find('=');
    if (!isInGroup || line.starts_with('#') || equals == std::string_view::npos) continue;
    takeKey(entry, trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
  }
  return entry;
}

}  // namespace torvane
