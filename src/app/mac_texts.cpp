#include "ports/desktop_texts.h"
#include "protocol/constants.h"

namespace torvane {
namespace {

AlertContent pairing(const std::string& name) {
  return {.message = "Pair with “" + name + "”?",
          .informativeText = "A device named “" + name +
                             "” wants to control PowerPoint on this Mac. Pair it if it's yours — "
                             "it will connect automatically from then on. You can forget paired "
                             "devices from the menu bar icon.",
          .buttons = {"Pair", "Ignore"}};
}

std::string engineStopped(int status, const std::string& explanation, const std::string& logPath) {
  return "The PowerPoint server stopped straight after starting (exit code " +
         std::to_string(status) + ").\n\n" + explanation + "\n\nFull log: " + logPath;
}

}  // namespace

const DesktopTexts kMacTexts = {
    .welcome =
        {.message = "Welcome to Torvane P2P Helper",
         .informativeText =
             "Your iPad can control PowerPoint on this Mac — no shared Wi\u2011Fi needed.\n\n"
             "macOS will now ask for a few permissions. Please approve each one:\n\n"
             "•  Accessibility — makes slide jumps instant\n"
             "•  Local Network — lets the iPad find this Mac\n"
             "•  “Control PowerPoint” — appears the first time the iPad connects\n\n"
             "Then open your presentation in PowerPoint, open Torvane on the iPad, and you're set. "
             "This app lives in the menu bar — look for the radio\u2011waves icon at the top right "
             "of the screen."},
    .howItWorks =
        {.message = "How Torvane works",
         .informativeText =
             "This menu bar app is the Mac half of Torvane. It does two jobs:\n\n"
             "•  It runs a small local server that drives Microsoft PowerPoint — changing slides, "
             "exporting slide pictures, and reading your speaker notes.\n\n"
             "•  It announces itself to nearby iPads the same way AirDrop does (Bluetooth and "
             "direct Wi\u2011Fi), so the iPad app finds this Mac by itself — no shared network, no "
             "cables, no addresses to type.\n\n"
             "On the iPad you see the current slide, your notes, and a tappable grid of every "
             "slide for jumping around. A drag with the laser tool shows as a red dot on the "
             "projector, and anything you draw with the Apple Pencil appears live over the "
             "presentation — and can be exported afterwards as an annotated PDF.\n\n"
             "The first time a new iPad connects, this Mac asks you to approve it, so nobody else "
             "in the room can take over your presentation. Everything stays between your devices; "
             "nothing goes through the internet.\n\n"
             "Tip: tap the ? button at the top of the iPad app for a guide to every control."},
    .pairing = pairing,
    .engineRunning = "PowerPoint server running on port " + std::to_string(PORT),
    .engineNotRunning = "PowerPoint server not running",
    .scriptMissing = "Cannot find torvane.py next to the app or in the bundle.",
    .engineStopped = engineStopped,
    .updateQuestion = "Update the Mac helper?",
    .namelessComputer = "Mac"};

}  // namespace torvane
