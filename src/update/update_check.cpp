// The search for a newer build.
// Events: the update timer, "Check for Updates". Fields: availableUpdate. Ports: Bundle, Clock,
// HttpSession.

#include "app/bridge_delegate.h"
#include "update/build_number.h"

namespace torvane {
namespace {

constexpr double kCheckTimeout = 15.0;
constexpr double kLongestCheck = 60.0;  // for a server that drips
constexpr std::uint64_t kMostVersionBytes = 65536;

constexpr const char* kUnreachable =
    "Couldn't reach the update server — check the internet connection and try again.";

// The build that the site published; none for whatever else came, or did not.
std::optional<std::string> publishedBuild(const HttpResult& result) {
  if (result.error || !result.response || result.response->status != 200) return std::nullopt;
  return parseBuildNumber(result.body);
}

}  // namespace

const char* const BridgeDelegate::updateBase = TORVANE_UPDATE_BASE;

std::string BridgeDelegate::myVersion() const {
  const auto version = platform_.bundle.infoValue("CFBundleVersion");
  if (!version || !version->is_string()) return "0";
  return {version->get_string().data(), version->get_string().size()};
}

bool BridgeDelegate::isInstalledCopy() const {
  return platform_.bundle.path().starts_with("/Applications/");
}

// The time only defeats caches on the way.
std::string BridgeDelegate::updateURL(const std::string& file) const {
  const auto now = static_cast<std::int64_t>(platform_.clock.unixTime());
  return updateBase + file + "?t=" + std::to_string(now);
}

void BridgeDelegate::checkForUpdate(bool manual) {
  assertMainThread();
  if (!isInstalledCopy()) return;
  HttpRequest request;
  request.url = updateURL("/version.txt");
  request.idleTimeout = kCheckTimeout;
  request.totalTimeout = kLongestCheck;
  request.maxResponseBytes = kMostVersionBytes;
  platform_.http.shared().dataTask(
      std::move(request),
      [this, main = main_, manual, current = myVersion()](const HttpResult& result) {
        main.async([this, manual, current, latest = publishedBuild(result)] {
          updateCheckDidEnd(manual, current, latest);
        });
      });
}

void BridgeDelegate::updateCheckDidEnd(bool manual, const std::string& current,
                                       const std::optional<std::string>& latest) {
  if (!latest) {
    if (manual) alert(kUnreachable);
    return;
  }
  const bool isNewer = std::is_gt(compareBuilds(*latest, current));
  availableUpdate = isNewer ? latest : std::nullopt;
  if (!manual) return;
  if (isNewer) {
    installUpdate();
  } else {
    alert("You're up to date — build " + current + " is the latest.");
  }
}

void BridgeDelegate::checkForUpdateTick() {
  checkForUpdate(false);
}

void BridgeDelegate::checkForUpdatesClicked() {
  checkForUpdate(true);
}

}  // namespace torvane
