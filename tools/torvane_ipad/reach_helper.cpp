#include "torvane_ipad/reach_helper.h"

#include <unistd.h>

#include <array>
#include <cmath>

#include "protocol/utf8.h"
#include "torvane_ipad/helper_choice.h"
#include "torvane_ipad/printable.h"
#include "torvane_ipad/private_files.h"

namespace torvane::ipad {
namespace {

constexpr std::size_t kMostNameSize = 63;

HelperSession::Duration milliseconds(double seconds) {
  return HelperSession::Duration(static_cast<std::int64_t>(std::ceil(seconds * 1000)));
}

}  // namespace

std::string defaultDisplayName() {
  std::array<char, 256> host{};
  const bool hasName = ::gethostname(host.data(), host.size() - 1) == 0 && host[0] != '\0';
  const std::string name = hasName ? printable(host.data()) : "this computer";
  return std::string(utf8Prefix("iPad of " + name, kMostNameSize));
}

std::string numberedName(const std::string& name, std::uint32_t number) {
  if (number == 0) return name;
  const std::string suffix = " (" + std::to_string(number) + ")";
  return std::string(utf8Prefix(name, kMostNameSize - suffix.size())) + suffix;
}

std::unique_ptr<HelperReach> HelperReach::prepare(const Options& options, const Console& console,
                                                  Exit& exit, Strangers strangers) {
  const std::filesystem::path keyFile =
      options.keyFile.empty() ? dataFolder() / "key" : std::filesystem::path(options.keyFile);
  const auto identity = loadIdentity(keyFile);
  if (const auto* problem = std::get_if<std::string>(&identity)) {
    exit = console.fail(Exit::usage, *problem);
    return nullptr;
  }
  auto known = loadKnownHelpers(knownHelpersFile());
  if (!known) {
    exit = console.fail(Exit::usage, "The list of known helpers, " + knownHelpersFile().string() +
                                         ", is damaged. Repair or remove it.");
    return nullptr;
  }
  auto helper = chooseHelper(options, *known);
  if (const auto* problem = std::get_if<std::string>(&helper)) {
    exit = console.fail(Exit::noConnection, *problem);
    return nullptr;
  }
  return std::unique_ptr<HelperReach>(
      new HelperReach(options, console, std::get<DeviceIdentity>(identity), std::move(*known),
                      std::get<HelperAddress>(std::move(helper)), strangers));
}

std::unique_ptr<HelperSession> HelperReach::invite(const Device& device, Exit& exit) {
  const auto identity = device.number == 0 ? identity_ : identity_.derived(device.number);
  auto session = std::make_unique<HelperSession>(network_, identity, milliseconds(options_.timeout),
                                                 device.firstId);
  const auto result = session->invite(
      settings(device), milliseconds(options_.approval), [&](const Welcome& welcome) {
        console_.note("Waiting for approval at \"" + printable(welcome.helperName) + "\" of \"" +
                      settings(device).displayName + "\" … Its question must show the digits " +
                      welcome.digits + "; choose \"Ignore\" if it does not.");
      });
  if (const auto* failure = std::get_if<LinkFailure>(&result)) {
    exit = fail(*failure);
    return nullptr;
  }
  welcome_ = std::get<Welcome>(result);
  remember(welcome_);
  return session;
}

std::unique_ptr<HelperSession> HelperReach::open(const Device& device, Exit& exit) {
  auto session = invite(device, exit);
  if (!session) return nullptr;
  const auto failure = session->authenticate();
  if (!failure) return session;
  exit = fail(*failure);
  return nullptr;
}

Exit HelperReach::fail(LinkFailure failure) const {
  const bool isExpected = known_.find(helper_.text()) != nullptr ||
                          known_.withFingerprint(helper_.fingerprint) != nullptr;
  if (failure.kind == LinkFailure::Kind::otherHelper && !isExpected) {
    failure.kind = LinkFailure::Kind::strangeHelper;
  }
  return console_.fail(exitFor(failure), explain(failure, printable(helper_.text())));
}

ConnectionSettings HelperReach::settings(const Device& device) const {
  const std::string name = options_.name.empty() ? defaultDisplayName() : options_.name;
  return {helper_.target(), helper_.port, numberedName(name, device.number), trusted(),
          milliseconds(options_.timeout)};
}

// A helper of this user that wrote its certificate into its own runtime file must show that one.
// Else each that is remembered will do, wherever it is now: it is the certificate that makes a
// computer known, not the address.
std::optional<std::vector<std::string>> HelperReach::trusted() const {
  using Fingerprints = std::vector<std::string>;
  if (!welcome_.fingerprint.empty()) return Fingerprints{welcome_.fingerprint};
  const std::string& announced = helper_.fingerprint;
  const bool mayTrust = strangers_ == Strangers::trusted;
  if (!announced.empty()) {
    const bool isTrusted = mayTrust || known_.withFingerprint(announced) != nullptr;
    return isTrusted ? Fingerprints{announced} : Fingerprints{};
  }
  const bool isExpected = known_.find(helper_.text()) != nullptr && !options_.trustNew;
  if (mayTrust && !isExpected) return std::nullopt;
  return known_.fingerprints();
}

void HelperReach::remember(const Welcome& welcome) {
  const KnownHelper* known = known_.withFingerprint(welcome.fingerprint);
  isNewlyTrusted_ = known == nullptr;
  if (known != nullptr && known == known_.latest() && known->address == helper_.text() &&
      known->name == welcome.helperName) {
    return;
  }
  // The one that was expected at this address is no more.
  if (isNewlyTrusted_) known_.forget(helper_.text());
  known_.remember({helper_.text(), welcome.helperName, welcome.fingerprint});
  if (!replacePrivateFile(knownHelpersFile(), known_.serialized())) {
    console_.note("The helper's certificate could not be remembered: " +
                  knownHelpersFile().string() + " cannot be written.");
  }
}

}  // namespace torvane::ipad
