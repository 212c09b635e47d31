#include "torvane_ipad/helper_choice.h"

#include <algorithm>

#include "torvane_ipad/printable.h"
#include "torvane_ipad/service_browser.h"

namespace torvane::ipad {
namespace {

constexpr auto kSearchTime = std::chrono::seconds(3);

HelperAddress namedHelper(const Options& options) {
  HelperAddress address;
  address.host = options.host.empty() ? "127.0.0.1" : options.host;
  if (options.port != 0) address.port = options.port;
  return address;
}

// Not every system looks names of the local network up, but Avahi does.
HelperAddress withAddress(HelperAddress helper) {
  if (!helper.host.ends_with(".local")) return helper;
  const auto isMeant = [&](const HelperAddress& found) {
    return found.host == helper.host && found.port == helper.port;
  };
  const auto search = searchNetwork(kSearchTime, [&](const std::vector<HelperAddress>& found) {
    return std::ranges::any_of(found, isMeant);
  });
  const auto meant = std::ranges::find_if(search.helpers, isMeant);
  return meant != search.helpers.end() ? *meant : helper;
}

std::variant<HelperAddress, std::string> chooseOnNetwork(const KnownHelpers& known) {
  const auto isKnown = [&](const std::vector<HelperAddress>& found) {
    const HelperAddress* picked = pickHelper(found, known);
    return picked != nullptr && known.find(picked->text()) != nullptr;
  };
  const NetworkSearch search = searchNetwork(kSearchTime, isKnown);
  if (const HelperAddress* picked = pickHelper(search.helpers, known)) return *picked;
  if (!search.helpers.empty()) {
    std::string text = "There is more than one helper on the network. Choose one with --host:";
    for (const HelperAddress& helper : search.helpers) {
      text += "\n  --host " + printable(helper.host) + " --port " + std::to_string(helper.port) +
              "  (" + printable(helper.name) + ")";
    }
    return text;
  }
  const KnownHelper* latest = known.latest();
  const auto address = latest != nullptr ? parseAddress(latest->address) : std::nullopt;
  if (address) return withAddress(*address);
  const std::string why = search.problem.empty() ? "" : " (" + search.problem + ")";
  return "No helper was found on this computer or the network" + why +
         ". Is Torvane P2P Helper running? Its address can be given with --host.";
}

}  // namespace

const HelperAddress* pickHelper(const std::vector<HelperAddress>& found,
                                const KnownHelpers& known) {
  for (const HelperAddress& helper : found) {
    if (known.find(helper.text()) != nullptr) return &helper;
  }
  return found.size() == 1 ? &found.front() : nullptr;
}

std::variant<HelperAddress, std::string> chooseHelper(const Options& options,
                                                      const KnownHelpers& known) {
  if (!options.host.empty() || options.port != 0) {
    return withAddress(namedHelper(options));
  }
  if (const auto local = localHelper()) return *local;
  return chooseOnNetwork(known);
}

}  // namespace torvane::ipad
