#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fakes/simulated_time.h"
#include "ports/alert.h"
#include "ports/application.h"
#include "ports/background_queue.h"
#include "ports/bundle.h"
#include "ports/clock.h"
#include "ports/code_check.h"
#include "ports/login_item.h"
#include "ports/main_queue.h"
#include "ports/permissions.h"
#include "ports/process_info.h"
#include "ports/running_applications.h"
#include "ports/status_item.h"
#include "ports/user_defaults.h"
#include "ports/workspace.h"

// The doubles of the desktop's own services. Each has inputs to set and a log to read; the order
// of calls over all of them is in one shared log.

namespace torvane {

using CallLog = std::vector<std::string>;

class FakeMainQueue final : public MainQueue {
 public:
  FakeMainQueue(SimulatedTime& time, CallLog& log) : time_(time), log_(log) {}

  std::vector<double> repeating;  // intervals, in the order they were scheduled
  std::vector<double> once;       // delays, likewise
  double blockedFor = 0;          // seconds
  bool sleeps = false;            // until a timer or queued work wakes it; else it is always awake

  void async(std::function<void()> work) override {
    for (auto& each : std::exchange(resting_, {})) time_.scheduleMain(0, std::move(each));
    time_.scheduleMain(0, std::move(work));
  }
  void asyncWhenAwake(std::function<void()> work) override {
    if (!sleeps) return async(std::move(work));
    resting_.push_back(std::move(work));
  }
  void after(double seconds, std::function<void()> work) override {
    once.push_back(seconds);
    time_.scheduleMain(seconds, [this, work = std::move(work)] {
      runResting();
      work();
    });
  }
  void every(double seconds, std::function<void()> work) override {
    repeating.push_back(seconds);
    repeat(seconds, std::make_shared<std::function<void()>>(std::move(work)));
  }
  void block(double seconds) override {
    log_.push_back("block " + std::to_string(seconds).substr(0, 3));
    blockedFor += seconds;
    time_.advanceWhileMainIsHeld(seconds);
  }
  [[nodiscard]] bool isCurrent() const override { return time_.isMainThread(); }

 private:
  void repeat(double seconds, const std::shared_ptr<std::function<void()>>& work) {
    time_.scheduleMain(seconds, [this, seconds, work] {
      repeat(seconds, work);
      runResting();
      (*work)();
    });
  }
  void runResting() {
    for (const auto& each : std::exchange(resting_, {})) each();
  }

  SimulatedTime& time_;
  CallLog& log_;
  std::vector<std::function<void()>> resting_;
};

class FakeBackgroundQueue final : public BackgroundQueue {
 public:
  explicit FakeBackgroundQueue(SimulatedTime& time) : time_(time) {}
  void after(double seconds, std::function<void()> work) override {
    time_.scheduleBackground(seconds, std::move(work));
  }

 private:
  SimulatedTime& time_;
};

class FakeClock final : public Clock {
 public:
  explicit FakeClock(SimulatedTime& time) : time_(time) {}
  double startedAt = 1'795'161'791;  // 2026-11-20 08:03:11 UTC
  [[nodiscard]] double unixTime() const override { return startedAt + time_.now(); }
  [[nodiscard]] double mediaTime() const override { return time_.now(); }

 private:
  SimulatedTime& time_;
};

class FakeApplication final : public Application {
 public:
  explicit FakeApplication(CallLog& log) : log_(log) {}
  std::function<void()> onTerminate;  // the platform's way out, once per call
  void activateIgnoringOtherApps() override { log_.push_back("activate"); }
  void terminate() override {
    log_.push_back("terminate");
    if (onTerminate) onTerminate();
  }

 private:
  CallLog& log_;
};

// What the status item shows now, read after it has been given away.
struct ShownStatusItem {
  std::vector<StatusIcon> icons;  // every icon set, oldest first
  MenuDelegate* menu = nullptr;
};

class FakeStatusBar final : public StatusBar {
 public:
  explicit FakeStatusBar(CallLog& log) : log_(log) {}
  ShownStatusItem shown;
  bool hasPlace = true;

  [[nodiscard]] std::unique_ptr<StatusItem> makeStatusItem() override {
    log_.push_back("make status item");
    if (!hasPlace) return nullptr;
    return std::make_unique<FakeStatusItem>(shown, log_);
  }

 private:
  class FakeStatusItem final : public StatusItem {
   public:
    FakeStatusItem(ShownStatusItem& shown, CallLog& log) : shown_(shown), log_(log) {}
    void setIcon(const StatusIcon& icon) override {
      log_.push_back("set icon");
      shown_.icons.push_back(icon);
    }
    void setMenu(MenuDelegate& delegate) override {
      log_.push_back("set menu");
      shown_.menu = &delegate;
    }

   private:
    ShownStatusItem& shown_;
    CallLog& log_;
  };

  CallLog& log_;
};

// Alerts are answered by the queued answers in order; what a test wants to happen while one is up
// goes into whileUp, which runs inside the nested loop.
class FakeAlerts final : public Alerts {
 public:
  explicit FakeAlerts(SimulatedTime& time, CallLog& log) : time_(time), log_(log) {}

  std::vector<AlertContent> shown;
  std::deque<int> answers;  // none left: the first button
  std::function<void(const AlertContent&)> whileUp;
  int up = 0;
  int mostUpAtOnce = 0;

  int runModal(const AlertContent& content) override {
    log_.push_back("alert " + content.message);
    shown.push_back(content);
    mostUpAtOnce = std::max(mostUpAtOnce, ++up);
    if (whileUp) whileUp(content);
    time_.runDue();
    --up;
    if (answers.empty()) return kAlertFirstButton;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
  }

 private:
  SimulatedTime& time_;
  CallLog& log_;
};

class FakeUserDefaults final : public UserDefaults {
 public:
  explicit FakeUserDefaults(CallLog& log) : log_(log) {}
  std::map<std::string, JsonValue> stored;
  std::map<std::string, JsonValue> onDisk;  // what a restart would find of what was stored
  bool diskIsFull = false;

  [[nodiscard]] std::optional<JsonValue> object(const std::string& key) const override {
    const auto found = stored.find(key);
    if (found == stored.end()) return std::nullopt;
    return found->second;
  }
  bool setObject(const std::string& key, JsonValue value) override {
    log_.push_back("store " + key);
    stored[key] = std::move(value);
    return save();
  }
  bool removeObject(const std::string& key) override {
    log_.push_back("remove " + key);
    stored.erase(key);
    return save();
  }
  [[nodiscard]] bool save() override {
    if (!diskIsFull) onDisk = stored;
    return !diskIsFull;
  }

 private:
  CallLog& log_;
};

class FakeBundle final : public Bundle {
 public:
  std::string bundlePath = "/opt/torvane/Torvane P2P Helper.app";
  std::map<std::string, std::string> resources = {
      {"torvane.py", "/opt/torvane/Torvane P2P Helper.app/Resources/torvane.py"}};
  std::map<std::string, JsonValue> info = {{"CFBundleVersion", "412"},
                                           {"CFBundleIdentifier", "org.example.helper"}};
  std::optional<std::string> executable = bundlePath + "/bin/torvane-p2p-helper";

  [[nodiscard]] std::string path() const override { return bundlePath; }
  [[nodiscard]] std::optional<std::string> executablePath() const override { return executable; }
  [[nodiscard]] std::optional<std::string> pathForResource(const std::string& name,
                                                           const std::string& type) const override {
    const auto found = resources.find(name + "." + type);
    if (found == resources.end()) return std::nullopt;
    return found->second;
  }
  [[nodiscard]] std::optional<JsonValue> infoValue(const std::string& key) const override {
    const auto found = info.find(key);
    if (found == info.end()) return std::nullopt;
    return found->second;
  }
};

class FakeProcessInfo final : public ProcessInfo {
 public:
  std::optional<std::string> name = "Lectern";
  std::string logs = "/home/presenter/Library/Logs/Torvane P2P Helper";
  std::map<std::string, std::string> variables = {{"LANG", "C.UTF-8"}};

  [[nodiscard]] std::optional<std::string> hostName() const override { return name; }
  [[nodiscard]] std::string homeDirectory() const override { return "/home/presenter"; }
  [[nodiscard]] std::string temporaryDirectory() const override { return "/temporary"; }
  [[nodiscard]] std::string logDirectory() const override { return logs; }
  [[nodiscard]] std::map<std::string, std::string> environment() const override {
    return variables;
  }
  [[nodiscard]] int processIdentifier() const override { return 4711; }
};

// Every application meets every requirement, but for those that are refused.
class FakeCodeCheck final : public CodeCheck {
 public:
  std::set<std::string> refused;                                          // paths
  mutable std::vector<std::pair<std::string, std::string>> requirements;  // asked for, by path

  [[nodiscard]] bool meets(const std::string& path, const std::string& requirement) const override {
    requirements.emplace_back(path, requirement);
    return refused.count(path) == 0;
  }
};

class FakeAccessibility final : public Accessibility {
 public:
  explicit FakeAccessibility(CallLog& log) : log_(log) {}
  bool isGranted = true;
  [[nodiscard]] bool isTrusted() const override { return isGranted; }
  void promptForTrust() override { log_.push_back("prompt for accessibility"); }

 private:
  CallLog& log_;
};

class FakePrivacyDatabase final : public PrivacyDatabase {
 public:
  bool isReadable = true;
  mutable std::vector<std::string> asked;
  [[nodiscard]] bool canRead(const std::string& path) const override {
    asked.push_back(path);
    return isReadable;
  }
};

class FakeRunningApplications final : public RunningApplications {
 public:
  explicit FakeRunningApplications(CallLog& log) : log_(log) {}
  std::map<std::string, std::vector<RunningApplication>> running;  // by bundle identifier
  std::vector<int> ended;                                          // process identifiers

  [[nodiscard]] std::vector<RunningApplication> withBundleIdentifier(
      const std::string& identifier) const override {
    const auto found = running.find(identifier);
    return found != running.end() ? found->second : std::vector<RunningApplication>{};
  }
  void forceTerminate(const RunningApplication& application) override {
    log_.push_back("force terminate " + std::to_string(application.processIdentifier));
    ended.push_back(application.processIdentifier);
  }

 private:
  CallLog& log_;
};

class FakeWorkspace final : public Workspace {
 public:
  explicit FakeWorkspace(CallLog& log) : log_(log) {}
  std::vector<std::string> opened;
  std::vector<std::string> trashed;  // tried, whether or not it went
  bool canTrash = true;

  void openURL(const std::string& url) override { opened.push_back(url); }
  bool moveToTrash(const std::string& path) override {
    log_.push_back("trash " + path);
    trashed.push_back(path);
    return canTrash;
  }

 private:
  CallLog& log_;
};

class FakeLoginItem final : public LoginItem {
 public:
  LoginItemStatus now = LoginItemStatus::notRegistered;
  std::optional<std::string> failure;  // of both calls
  std::vector<std::string> calls;

  [[nodiscard]] LoginItemStatus status() const override { return now; }
  [[nodiscard]] std::optional<std::string> registerItem() override {
    return change("register", LoginItemStatus::enabled);
  }
  [[nodiscard]] std::optional<std::string> unregisterItem() override {
    return change("unregister", LoginItemStatus::notRegistered);
  }

 private:
  std::optional<std::string> change(const char* call, LoginItemStatus status) {
    calls.emplace_back(call);
    if (!failure) now = status;
    return failure;
  }
};

}  // namespace torvane
