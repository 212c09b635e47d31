#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/application.h"
#include "ports/background_queue.h"
#include "ports/bundle.h"
#include "ports/child_process.h"
#include "ports/clock.h"
#include "ports/code_check.h"
#include "ports/desktop_texts.h"
#include "ports/file_system.h"
#include "ports/http_session.h"
#include "ports/main_hop.h"
#include "ports/process_info.h"
#include "ports/user_dialogs.h"
#include "update/update_attempt.h"
#include "update/update_plan.h"

namespace torvane {

// Looks for newer builds of an installed copy, and replaces it by one when the user says so. Main
// thread only.
class Updater {
 public:
  static const char* const updateBase;                 // the update site, without a trailing slash
  static constexpr const char* teamID = "ZQ4W8N2HJT";  // who signs our updates

  struct Ports {
    Application& application;
    Bundle& bundle;
    FileSystem& files;
    ProcessLauncher& processes;
    ProcessInfo& processInfo;
    BackgroundQueue& backgroundQueue;
    MainQueue& mainQueue;
    HttpSessions& http;
    Clock& clock;
    const CodeCheck& codeCheck;
    const DesktopTexts& texts;
  };

  class Host {
   public:
    virtual void quit() = 0;

   protected:
    ~Host() = default;
  };

  Updater(const Ports& ports, const MainHop& main, UserDialogs& dialogs, Host& host);
  ~Updater() { abandon(); }
  Updater(const Updater&) = delete;
  Updater& operator=(const Updater&) = delete;

  [[nodiscard]] bool isInstalledCopy() const;
  [[nodiscard]] const std::optional<std::string>& available() const { return availableUpdate; }
  [[nodiscard]] bool isInProgress() const { return updateInProgress; }

  void checkForUpdateTick();
  void checkForUpdatesClicked();
  void installUpdate();

  // For the program's end: what is under way is to end at once; then it is waited for, which may
  // block for a second, or ten while an installed copy is made whole again.
  void abandon();
  void awaitEnd();

 private:
  [[nodiscard]] std::string updateURL(const std::string& file) const;
  void checkForUpdate(bool manual);
  void updateCheckDidEnd(bool manual, const std::string& current,
                         const std::optional<std::string>& latest);
  [[nodiscard]] UpdatePlan updatePlan() const;
  void prepareDownload(const std::string& build);
  void downloadUpdate(const std::shared_ptr<UpdateAttempt>& attempt, const UpdatePlan& plan,
                      const std::string& build);
  void updateFailed(const std::string& reason);
  void restart(const UpdatePlan& plan);

  const Ports ports_;
  const MainHop main_;
  UserDialogs& dialogs_;
  Host& host_;

  std::optional<std::string> availableUpdate;  // its build
  bool updateInProgress = false;
  std::weak_ptr<UpdateAttempt> updateAttempt;  // kept by what works on it
};

}  // namespace torvane
