// Finding helpers and being paired with them.

#include "torvane_ipad/commands.h"
#include "torvane_ipad/helper_choice.h"
#include "torvane_ipad/printable.h"
#include "torvane_ipad/private_files.h"
#include "torvane_ipad/reach_helper.h"
#include "torvane_ipad/service_browser.h"

namespace torvane::ipad {
namespace {

constexpr auto kSearchTime = std::chrono::seconds(3);

void sayHelper(const Console& console, const HelperAddress& helper, const std::string& where,
               bool isKnown) {
  const std::string name = helper.name.empty() ? "A helper" : printable(helper.name);
  console.say("helper",
              name + " at " + printable(helper.text()) + ", " + where +
                  (isKnown ? " (known to this device)" : ""),
              {{"name", printable(helper.name)},
               {"host", printable(helper.host)},
               {"port", helper.port},
               {"address", printable(helper.target())},
               {"where", where},
               {"known", isKnown}});
}

Exit forgetHelper(const Options& options, const Console& console) {
  auto known = loadKnownHelpers(knownHelpersFile());
  const auto helper = chooseHelper(options, known.value_or(KnownHelpers{}));
  if (const auto* problem = std::get_if<std::string>(&helper)) {
    return console.fail(Exit::noConnection, *problem);
  }
  const auto& meant = std::get<HelperAddress>(helper);
  const KnownHelper* same = known ? known->withFingerprint(meant.fingerprint) : nullptr;
  const std::string address = same != nullptr ? same->address : meant.text();
  if (!known || !known->forget(address)) {
    return console.fail(Exit::usage, "No certificate of " + address + " is remembered.");
  }
  if (!replacePrivateFile(knownHelpersFile(), known->serialized())) {
    return console.fail(Exit::usage, knownHelpersFile().string() + " cannot be written.");
  }
  console.say("forgotten", "The certificate of " + address + " is forgotten.",
              {{"helper", address}});
  return Exit::ok;
}

}  // namespace

Exit findHelpers(const Options&, const Console& console) {
  const auto known = loadKnownHelpers(knownHelpersFile()).value_or(KnownHelpers{});
  const auto isKnown = [&](const HelperAddress& helper) {
    return (helper.fingerprint.empty() ? known.find(helper.text())
                                       : known.withFingerprint(helper.fingerprint)) != nullptr;
  };
  const auto local = localHelper();
  if (local) sayHelper(console, *local, "on this computer", isKnown(*local));

  const auto search = searchNetwork(kSearchTime, [](const auto&) { return false; });
  for (const HelperAddress& helper : search.helpers) {
    sayHelper(console, helper, "on the network", isKnown(helper));
  }
  if (!search.problem.empty()) {
    console.note("The network cannot be searched: " + search.problem +
                 ". Helpers can still be reached with --host and --port.");
  }
  if (local || !search.helpers.empty()) return Exit::ok;
  return console.fail(Exit::noConnection, "No helper was found. Is Torvane P2P Helper running?");
}

Exit pairDevices(const Options& options, const Console& console) {
  if (options.forget) return forgetHelper(options, console);
  Exit exit = Exit::ok;
  const auto reach = HelperReach::prepare(options, console, exit, Strangers::trusted);
  if (!reach) return exit;

  const std::string name = options.name.empty() ? defaultDisplayName() : options.name;
  // Without --peers it is the device of the key file, number 0, that is paired.
  const std::uint32_t first = options.peers == 0 ? 0 : 1;
  for (std::uint32_t number = first; number <= options.peers; ++number) {
    if (!reach->invite({number, 1}, exit)) return exit;
    const std::string device = numberedName(name, number);
    const Welcome& welcome = reach->welcome();
    console.say("accepted",
                "\"" + printable(welcome.helperName) + "\" accepted \"" + device + "\".",
                {{"helper", printable(welcome.helperName)},
                 {"address", printable(reach->helper().text())},
                 {"fingerprint", welcome.fingerprint},
                 {"digits", welcome.digits},
                 {"device", device}});
    if (reach->isNewlyTrusted()) {
      console.note("It is trusted from now on. Where nobody pressed \"Pair\" beside the digits " +
                   welcome.digits +
                   ", another computer may have posed as it: run \"torvane-ipad pair --forget\".");
    }
  }
  return Exit::ok;
}

}  // namespace torvane::ipad
