#include "ports/desktop_texts.h"
#include "protocol/constants.h"

namespace torvane {
namespace {

AlertContent pairing(const std::string& name) {
  return {.message = "Pair with “" + name + "”?",
          .informativeText = "A device named “" + name +
                             "” wants to control the presentation on this computer. Pair it if "
                             "it's yours — it will connect automatically from then on. You can "
                             "forget paired devices from this program's menu.",
          .buttons = {"Pair", "Ignore"}};
}

std::string engineStopped(int status, const std::string& explanation, const std::string& logPath) {
  return "The presentation server stopped straight after starting (exit code " +
         std::to_string(status) + ").\n\n" + explanation + "\n\nFull log: " + logPath;
}

}  // namespace

const DesktopTexts kLinuxTexts = {
    .welcome =
        {.message = "Welcome to Torvane P2P Helper",
         .informativeText =
             "Your iPad can control the presentation on this computer. Three things get you "
             "ready:\n\n"
             "•  Same network — connect this computer and the iPad to one network; a phone's "
             "hotspot will do\n"
             "•  Your presentation — open it in LibreOffice Impress; until then your iPad shows "
             "a built\u2011in sample\n"
             "•  Torvane on the iPad — open it, and answer the question that appears here the "
             "first time\n\n"
             "This program lives in the status area — look for the radio\u2011waves icon, which is "
             "crossed out until the presentation server runs. On a desktop without a status area, "
             "a small window takes its place."},
    .howItWorks =
        {.message = "How Torvane works",
         .informativeText =
             "This program is the computer's half of Torvane. It does two jobs:\n\n"
             "•  It runs a small local server that drives your slide show in LibreOffice Impress, "
             "or a built\u2011in sample when no presentation is open — changing slides, making "
             "slide pictures, and reading your speaker notes.\n\n"
             "•  It announces itself on the local network, so an iPad on the same network finds "
             "this computer by itself. If yours does not, use the address in the menu.\n\n"
             "On the iPad you see the current slide, your notes, and a tappable grid of every "
             "slide for jumping around. A drag with the laser tool shows as a red dot on the "
             "projector, and what you draw with the Apple Pencil appears live over the "
             "slides.\n\n"
             "The first time a new iPad connects, this computer asks you to approve it, so nobody "
             "else in the room can take over your presentation. Everything stays between your "
             "devices; nothing goes through the internet.\n\n"
             "Tip: tap the ? button at the top of the iPad app for a guide to every control."},
    .pairing = pairing,
    .engineRunning = "Presentation server running on port " + std::to_string(PORT),
    .engineNotRunning = "Presentation server not running",
    .scriptMissing =
        "Cannot find torvane.py, which is the presentation server. Install Torvane P2P Helper "
        "again to bring it back.",
    .engineStopped = engineStopped,
    .updateQuestion = "Update the helper?",
    .namelessComputer = "Linux computer"};

}  // namespace torvane
