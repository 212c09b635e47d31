#include "platform/linux/linux_process_info.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

extern char** environ;

namespace torvane {
namespace {

std::string fileText(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string networkName() {
  std::array<char, 257> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return {};
  return name.data();
}

std::string homeFromUserDatabase() {
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0) return {};
  return found != nullptr ? found->pw_dir : "";
}

std::string findHome() {
  const char* fromEnvironment = std::getenv("HOME");
  std::string home = fromEnvironment != nullptr ? fromEnvironment : "";
  if (home.empty() || home.front() != '/') home = homeFromUserDatabase();
  while (home.size() > 1 && home.back() == '/') home.pop_back();
  return home;
}

// XDG Base Directory Specification: a variable that is no absolute path counts as not set.
std::string userFolder(const char* variable, const std::string& otherwise) {
  const char* given = std::getenv(variable);
  return given != nullptr && given[0] == '/' ? given : otherwise;
}

std::map<std::string, std::string> readEnvironment() {
  std::map<std::string, std::string> result;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) continue;
    result.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  return result;
}

// A value as a shell reads it: one pair of quotes, and backslashes that keep the next character.
std::string unquoted(std::string_view value) {
  const char quote = value.empty() ? '\0' : value.front();
  const bool isQuoted = quote == '"' || quote == '\'';
  if (isQuoted) value.remove_prefix(1);
  std::string result;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (isQuoted && value[i] == quote) break;
    if (value[i] == '\\' && quote != '\'' && i + 1 < value.size()) ++i;
    result += value[i];
  }
  return result;
}

}  // namespace

LinuxProcessInfo::LinuxProcessInfo(const std::string& machineInfo)
    : homeDirectory_(findHome()),
      // /tmp belongs to everybody: what is made there under a name that can be guessed, somebody
      // else may have made before.
      temporaryDirectory_(userFolder("XDG_CACHE_HOME", homeDirectory_ + "/.cache") + "/torvane"),
      logDirectory_(userFolder("XDG_STATE_HOME", homeDirectory_ + "/.local/state") +
                    "/torvane-p2p-helper"),
      environment_(readEnvironment()) {
  std::string name = prettyHostName(fileText(machineInfo));
  if (name.empty()) name = shortHostName(networkName());
  if (!name.empty()) hostName_ = std::move(name);
}

int LinuxProcessInfo::processIdentifier() const {
  return ::getpid();
}

std::string prettyHostName(std::string_view machineInfo) {
  constexpr std::string_view kKey = "PRETTY_HOSTNAME=";
  std::string name;
  while (!machineInfo.empty()) {
    std::string_view line = machineInfo.substr(0, machineInfo.find('\n'));
    machineInfo.remove_prefix(std::min(line.size() + 1, machineInfo.size()));
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.remove_suffix(1);
    if (line.starts_with(kKey)) name = unquoted(line.substr(kKey.size()));
  }
  return name;
}

std::string shortHostName(std::string_view networkName) {
  return std::string(networkName.substr(0, networkName.find('.')));
}

}  // namespace torvane
