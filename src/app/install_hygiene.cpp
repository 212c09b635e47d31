#include "app/install_hygiene.h"

#include <optional>
#include <string>

#include "protocol/sha256.h"

namespace torvane {
namespace {

constexpr const char* kFormerBundle = "/Applications/Torvane P2P.app";
constexpr const char* kOwnBundleIdentifier = "app.torvane.p2p-helper";
constexpr const char* kResetForBinary = "tccResetForBinary";

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

void retireOldNamedApp(const Platform& platform) {
  const std::string own = platform.bundle.path();
  if (const auto identifier = identifierOf(platform.bundle)) {
    for (const auto& other : platform.runningApplications.withBundleIdentifier(*identifier)) {
      if (!other.bundlePath || *other.bundlePath == own) continue;
      platform.runningApplications.forceTerminate(other);
    }
  }
  if (own == kFormerBundle || !platform.files.exists(kFormerBundle)) return;
  static_cast<void>(platform.workspace.moveToTrash(kFormerBundle));  // nobody to tell
}

void tccSelfHealIfReplaced(const Platform& platform) {
  if (platform.accessibility.isTrusted()) return;
  const auto executable = platform.bundle.executablePath();
  const auto hash = executable ? sha256OfFile(platform.files, *executable) : std::nullopt;
  if (!hash || textOf(platform.defaults.object(kResetForBinary)) == hash) return;
  // Stored first: once for an executable, whatever becomes of it.
  platform.defaults.setObject(kResetForBinary, JsonValue(*hash));
  const std::string identifier = identifierOf(platform.bundle).value_or(kOwnBundleIdentifier);
  for (const char* service : {"Accessibility", "AppleEvents", "SystemPolicyAppData"}) {
    resetPermission(platform.processes, service, identifier);
  }
}

bool hasFullDiskAccess(const Platform& platform) {
  return platform.privacyDatabase.canRead(platform.processInfo.homeDirectory() +
                                          "/Library/Application Support/com.apple.TCC/TCC.db");
}

}  // namespace torvane
