// Housekeeping of the installed copy at start-up: other copies are ended, the one under the former
// name is thrown away, and permissions that stand for a replaced executable are asked for afresh.
// Ports: Bundle, RunningApplications, Workspace, FileSystem, Accessibility, UserDefaults,
// ProcessLauncher, PrivacyDatabase.

#include "app/bridge_delegate.h"
#include "protocol/sha256.h"

namespace torvane {
namespace {

constexpr const char* kFormerBundle = "/Applications/Torvane P2P.app";
constexpr const char* kOwnBundleIdentifier = "app.torvane.p2p-helper";
constexpr const char* kResetForBinary = "tccResetForBinary";

std::optional<std::string> textValue(const std::optional<JsonValue>& value) {
  if (!value || !value->is_string()) return std::nullopt;
  return std::string(value->get_string());
}

// None when not all of the file could be read.
std::optional<std::string> sha256OfFile(FileSystem& files, const std::string& path) {
  constexpr std::size_t kPiece = 1 << 20;
  const auto size = files.fileSize(path);
  const auto file = files.openForReading(path);
  if (!size || !file) return std::nullopt;
  Sha256 hash;
  std::uint64_t read = 0;
  for (Bytes piece = file->read(kPiece); !piece.empty(); piece = file->read(kPiece)) {
    hash.add(piece);
    read += piece.size();
  }
  if (read != *size) return std::nullopt;
  return hash.hexadecimal();
}

void resetPermission(ProcessLauncher& processes, const std::string& service,
                     const std::string& bundleIdentifier) {
  ProcessLaunch reset;
  reset.executable = "/usr/bin/tccutil";
  reset.arguments = {"reset", service, bundleIdentifier};
  const LaunchResult launched = processes.launch(reset, {});
  if (launched.process) launched.process->waitUntilExit();
}

}  // namespace

std::optional<std::string> BridgeDelegate::bundleIdentifier() const {
  return textValue(platform_.bundle.infoValue("CFBundleIdentifier"));
}

void BridgeDelegate::retireOldNamedApp() {
  assertMainThread();
  const std::string own = platform_.bundle.path();
  if (const auto identifier = bundleIdentifier()) {
    for (const auto& other : platform_.runningApplications.withBundleIdentifier(*identifier)) {
      if (!other.bundlePath || *other.bundlePath == own) continue;
      platform_.runningApplications.forceTerminate(other);
    }
  }
  if (own == kFormerBundle || !platform_.files.exists(kFormerBundle)) return;
  static_cast<void>(platform_.workspace.moveToTrash(kFormerBundle));  // nobody to tell
}

void BridgeDelegate::tccSelfHealIfReplaced() {
  assertMainThread();
  if (platform_.accessibility.isTrusted()) return;
  const auto executable = platform_.bundle.executablePath();
  const auto hash = executable ? sha256OfFile(platform_.files, *executable) : std::nullopt;
  if (!hash || textValue(platform_.defaults.object(kResetForBinary)) == hash) return;
  // Stored first: once for an executable, whatever becomes of it.
  platform_.defaults.setObject(kResetForBinary, JsonValue(*hash));
  const std::string identifier = bundleIdentifier().value_or(kOwnBundleIdentifier);
  for (const char* service : {"Accessibility", "AppleEvents", "SystemPolicyAppData"}) {
    resetPermission(platform_.processes, service, identifier);
  }
}

bool BridgeDelegate::hasFullDiskAccess() const {
  return platform_.privacyDatabase.canRead(platform_.processInfo.homeDirectory() +
                                           "/Library/Application Support/com.apple.TCC/TCC.db");
}

}  // namespace torvane
