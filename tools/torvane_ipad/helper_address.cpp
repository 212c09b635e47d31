#include "torvane_ipad/helper_address.h"

#include <signal.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <limits>

#include "protocol/json.h"
#include "torvane_ipad/known_helpers.h"
#include "torvane_ipad/private_files.h"

namespace torvane::ipad {
namespace {

constexpr std::size_t kMostFileSize = 65536;

std::optional<std::uint16_t> asPort(std::int64_t number) {
  if (number < 1 || number > std::numeric_limits<std::uint16_t>::max()) return std::nullopt;
  return static_cast<std::uint16_t>(number);
}

// Whether the helper that wrote the file may still run; one that crashed left its file behind.
bool mayRun(const JsonObject& file) {
  const auto pid = integerMember(file, "pid");
  if (!pid || *pid < 1 || *pid > std::numeric_limits<pid_t>::max()) return true;
  return ::kill(static_cast<pid_t>(*pid), 0) == 0 || errno != ESRCH;
}

}  // namespace

std::string HelperAddress::text() const {
  const bool needsBrackets = host.find(':') != std::string::npos;
  return (needsBrackets ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::optional<HelperAddress> parseAddress(std::string_view text) {
  const auto colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  std::string_view host = text.substr(0, colon);
  const std::string_view digits = text.substr(colon + 1);
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);

  std::int64_t number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  const auto port = asPort(number);
  if (host.empty() || error != std::errc{} || stop != end || !port) return std::nullopt;
  HelperAddress address;
  address.host = host;
  address.port = *port;
  return address;
}

std::optional<HelperAddress> parseRuntimeFile(std::string_view json) {
  const auto file = parseJsonObject(json);
  const auto number = file ? integerMember(*file, "port") : std::nullopt;
  const auto port = number ? asPort(*number) : std::nullopt;
  const auto fingerprint = file ? stringMember(*file, "fingerprint") : std::nullopt;
  if (!port || !fingerprint || !isFingerprint(*fingerprint) || !mayRun(*file)) return std::nullopt;
  return HelperAddress{"127.0.0.1", *port, "", stringMember(*file, "name").value_or(""),
                       *fingerprint};
}

std::optional<HelperAddress> localHelper() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder == nullptr || *folder != '/') return std::nullopt;
  const auto file = std::filesystem::path(folder) / "torvane" / "peer-link.json";
  const auto text = readFile(file, kMostFileSize);
  return text ? parseRuntimeFile(*text) : std::nullopt;
}

}  // namespace torvane::ipad
