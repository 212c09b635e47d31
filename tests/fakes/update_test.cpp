#include "fakes/update_test.h"

namespace torvane {
namespace {

constexpr std::string_view kMagic = "PK";
constexpr std::string_view kArrow = "→ ";

std::string nameOf(const std::string& executable) {
  return executable.substr(executable.rfind('/') + 1);
}

}  // namespace

FakeProgram FakeTool::program() const {
  if (isMissing) return {"", std::nullopt, "No such file or directory."};
  return {output, hangs ? std::optional<int>() : status, ""};
}

UpdateTest::UpdateTest() = default;
UpdateTest::~UpdateTest() = default;

void UpdateTest::SetUp() {
  platform.bundle.bundlePath = kInstalled;
  platform.files.put(std::string(kInstalled) + "/bin/torvane-p2p-helper", "the program of 412");
  platform.files.put(std::string(kInstalled) + "/Contents/Info.plist", "412");
  platform.files.links[std::string(kInstalled) + "/current"] = "bin";
  archive = {{"Torvane P2P Helper.app/bin/torvane-p2p-helper", "the program of 413"},
             {"Torvane P2P Helper.app/Contents/Info.plist", "413"},
             {"Torvane P2P Helper.app/current", "→ bin"}};
  putArchive();
  platform.http.server = [this](const HttpRequest& request) { return serve(request); };
  platform.processes.program = [this](const ProcessLaunch& launch) { return run(launch); };
  launch();
  platform.time.runDue();
  platform.log.clear();
}

// A stand-in for the format: each entry's path and text between zero bytes.
void UpdateTest::putArchive() {
  std::string zip(kMagic);
  for (const auto& [path, text] : archive) zip += path + '\0' + text + '\0';
  archiveAnswer = {httpResult(200, zip), archiveAnswer.delay};
}

void UpdateTest::checkByHand() {
  choose(kCheck);
}

void UpdateTest::checkByTimer() {
  platform.time.advance(5.1);
}

std::function<void()> UpdateTest::entry(const std::string& title) {
  for (const auto& item : helper->menuNeedsUpdate()) {
    if (item.title != title || !item.action) continue;
    return [this, action = item.action] {
      action();
      platform.time.runDue();
    };
  }
  ADD_FAILURE() << "no entry " << title;
  return [] {};
}

std::string UpdateTest::menuEntry() {
  for (const auto& item : helper->menuNeedsUpdate()) {
    if (item.title.find("Updat") == std::string::npos) continue;
    return item.title + (item.action ? "" : " (disabled)");
  }
  return {};
}

FakeAnswer UpdateTest::serve(const HttpRequest& request) {
  if (request.url.find("/version.txt") != std::string::npos) return versionAnswer;
  if (request.url.find("/Torvane-P2P-Mac.zip") != std::string::npos) return archiveAnswer;
  return {httpResult(200, "{}"), 0};
}

FakeProgram UpdateTest::run(const ProcessLaunch& launch) {
  const std::string name = nameOf(launch.executable);
  if (name == "python3") return {};
  if (name == "ditto" && tools.count(name) == 0) return ditto(launch.arguments);
  FakeTool tool;
  if (name == "codesign") tool.output = "Identifier=a.b\nTeamIdentifier=ZQ4W8N2HJT\nSealed=2\n";
  if (name == "PlistBuddy") tool.output = platform.files.text(launch.arguments.back()) + "\n";
  if (const auto other = tools.find(name); other != tools.end()) tool = other->second;
  return tool.program();
}

FakeProgram UpdateTest::ditto(const std::vector<std::string>& arguments) {
  if (arguments.front() == "-x") return unpack(arguments[2], arguments[3]);
  platform.files.copyTree(arguments[0], arguments[1]);
  const auto other = tools.find("second ditto");
  return (other != tools.end() ? other->second : FakeTool()).program();
}

FakeProgram UpdateTest::unpack(const std::string& zip, const std::string& into) {
  std::string rest = platform.files.text(zip);
  if (!rest.starts_with(kMagic)) return {"ditto: Couldn't read pkzip signature.\n", 1, ""};
  rest.erase(0, kMagic.size());
  while (!rest.empty()) {
    const auto first = rest.find('\0');
    const auto second = rest.find('\0', first + 1);
    if (second == std::string::npos) return {"ditto: Couldn't read.\n", 1, ""};
    const std::string path = into + "/" + rest.substr(0, first);
    const std::string text = rest.substr(first + 1, second - first - 1);
    if (text.starts_with(kArrow)) {
      platform.files.links[path] = text.substr(kArrow.size());
    } else {
      platform.files.put(path, text);
    }
    rest.erase(0, second + 1);
  }
  return {"", 0, ""};
}

std::vector<HttpRequest> UpdateTest::requestsOf(const std::string& file) const {
  std::vector<HttpRequest> found;
  for (const auto& request : platform.http.requests) {
    if (request.url.find(file) != std::string::npos) found.push_back(request);
  }
  return found;
}

std::vector<std::string> UpdateTest::toolsRun() const {
  std::vector<std::string> found;
  for (const auto& entry : platform.processes.launched) {
    const ProcessLaunch& launch = entry.launch;
    if (nameOf(launch.executable) == "python3") continue;
    std::string line = launch.executable;
    for (const auto& argument : launch.arguments) line += "|" + argument;
    found.push_back(line);
  }
  return found;
}

std::string UpdateTest::lastAlert() const {
  return platform.alerts.shown.empty() ? "" : platform.alerts.shown.back().informativeText;
}

bool UpdateTest::hasQuit() const {
  return !platform.logged({"terminate"}).empty();
}

}  // namespace torvane
