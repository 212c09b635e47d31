#include "fakes/engine_test.h"

namespace torvane {
namespace {

constexpr const char* kBundled = "/opt/torvane/Torvane P2P Helper.app/Resources/torvane.py";
constexpr const char* kBeside = "/opt/torvane/torvane.py";
constexpr const char* kLog = "/home/presenter/Library/Logs/Torvane P2P Helper/engine.log";

class EngineProcess : public EngineTest {
 protected:
  void engineDoes(FakeProgram program) {
    platform.processes.program = [program](const ProcessLaunch& launch) {
      return launch.arguments.size() == 2 ? program : FakeProgram{"", 0, ""};
    };
  }
  std::string lastAlert() { return platform.alerts.shown.back().informativeText; }
};

TEST_F(EngineProcess, ScriptNextToTheApplicationWins) {
  platform.files.put(kBeside, "");
  engine.startServer();
  ASSERT_EQ(engines().size(), 1U);
  EXPECT_EQ(engines()[0].launch.arguments, (std::vector<std::string>{kBeside, "8484"}));
}

TEST_F(EngineProcess, MissingScriptIsToldAndNothingStarts) {
  platform.bundle.resources.clear();
  engine.startServer();
  EXPECT_EQ(platform.alerts.shown.back(),
            (AlertContent{
                .message = "Torvane P2P Helper",
                .informativeText = "Cannot find torvane.py next to the app or in the bundle."}));
  EXPECT_TRUE(platform.processes.launched.empty());
}

TEST_F(EngineProcess, PythonsProblemIsToldAndNothingStarts) {
  platform.files.contents.clear();
  engine.startServer();
  EXPECT_EQ(lastAlert(), kMacPython.missing);
  EXPECT_TRUE(engines().empty());
}

TEST_F(EngineProcess, StartsPythonWithScriptAndPort) {
  engine.startServer();
  ASSERT_EQ(engines().size(), 1U);
  const auto launch = engines()[0].launch;
  EXPECT_EQ(launch.executable, "/usr/bin/python3");
  EXPECT_EQ(launch.arguments, (std::vector<std::string>{kBundled, "8484"}));
  EXPECT_TRUE(platform.alerts.shown.empty());
  EXPECT_FALSE(starts()) << "it has one";
}

TEST_F(EngineProcess, AddsItsProcessIdToItsOwnEnvironment) {
  platform.processInfo.variables["TORVANE_PARENT_PID"] = "1";
  engine.startServer();
  EXPECT_EQ(
      engines()[0].launch.environment,
      (std::map<std::string, std::string>{{"LANG", "C.UTF-8"}, {"TORVANE_PARENT_PID", "4711"}}));
}

TEST_F(EngineProcess, WritesTheBannerAndSendsTheOutputToTheLog) {
  engineDoes({"hello\n", std::nullopt, ""});
  engine.startServer();
  EXPECT_EQ(engines()[0].launch.output, ProcessOutput::file);
  EXPECT_EQ(platform.files.text(kLog),
            "\n===== engine start 2026-11-20 08:03:11 +0000 =====\nhello\n");
}

TEST_F(EngineProcess, StartsWithoutALogWhenThereIsNone) {
  platform.files.unwritable.insert(kLog);
  engine.startServer();
  ASSERT_EQ(engines().size(), 1U);
  EXPECT_EQ(engines()[0].launch.output, ProcessOutput::nullDevice);
}

TEST_F(EngineProcess, DoesNothingWhileTheEngineIsRunning) {
  learn(200);
  platform.bundle.resources.clear();
  engine.startServer();
  EXPECT_TRUE(platform.processes.launched.empty());
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(EngineProcess, DoesNothingWhileItsChildStillRuns) {
  engine.startServer();
  const auto launched = platform.processes.launched.size();
  platform.bundle.resources.clear();
  engine.startServer();
  EXPECT_EQ(platform.processes.launched.size(), launched);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(EngineProcess, FailedLaunchIsToldAndKeepsNoChild) {
  engineDoes({"", std::nullopt, "Permission denied"});
  engine.startServer();
  EXPECT_EQ(lastAlert(), "Could not start the server: Permission denied");
  engineDoes({});
  EXPECT_TRUE(starts()) << "it has none";
}

TEST_F(EngineProcess, IsProbedOneSecondAfterItsStart) {
  engine.startServer();
  platform.time.advance(0.9);
  EXPECT_TRUE(platform.http.requests.empty());
  platform.time.advance(0.2);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U);
}

TEST_F(EngineProcess, EarlyExitShowsTheCodeTheTailAndTheLog) {
  engineDoes({"Traceback\n\nOSError: port in use\n", 98, ""});
  engine.startServer();
  platform.time.runDue();
  EXPECT_EQ(lastAlert(),
            "The PowerPoint server stopped straight after starting (exit code "
            "98).\n\nTraceback\nOSError: port in use\n\nFull log: " +
                std::string(kLog));
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U);
  EXPECT_TRUE(starts()) << "it has none";
}

TEST_F(EngineProcess, EarlyExitShowsOnlyThisRunsOutput) {
  platform.files.put(kLog, "older run\n");
  engineDoes({"newer run\n", 1, ""});
  engine.startServer();
  platform.time.runDue();
  EXPECT_EQ(lastAlert().find("older run"), std::string::npos);
  EXPECT_NE(lastAlert().find("newer run"), std::string::npos);
}

TEST_F(EngineProcess, SilentEarlyExitSaysThatItGaveNoExplanation) {
  engineDoes({"", 1, ""});
  engine.startServer();
  platform.time.runDue();
  EXPECT_NE(lastAlert().find("(exit code 1).\n\nIt gave no explanation.\n\nFull log: "),
            std::string::npos);
}

TEST_F(EngineProcess, StatusZeroNeverRaisesTheAlert) {
  engineDoes({"", 0, ""});
  engine.startServer();
  platform.time.runDue();
  EXPECT_TRUE(platform.alerts.shown.empty());
  EXPECT_TRUE(starts()) << "it has none";
}

TEST_F(EngineProcess, LaterCrashIsSilent) {
  engine.startServer();
  platform.time.advance(5.0);
  engines()[0].process->exit(1);
  platform.time.runDue();
  EXPECT_TRUE(platform.alerts.shown.empty());
  EXPECT_TRUE(starts()) << "it has none";
}

TEST_F(EngineProcess, CrashJustBeforeFiveSecondsIsStillEarly) {
  engine.startServer();
  platform.time.advance(4.9);
  engines()[0].process->exit(1);
  platform.time.runDue();
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
}

TEST_F(EngineProcess, ExitOfAProcessThatIsNoLongerTheChildIsIgnored) {
  engine.startServer();
  engines()[0].process->obeysTerminate = false;
  engine.stopServer();
  platform.time.advance(2.1);
  engine.startServer();
  ASSERT_EQ(engines().size(), 2U);
  engines()[0].process->exit(1);
  platform.time.runDue();
  EXPECT_TRUE(platform.alerts.shown.empty());
  EXPECT_FALSE(starts()) << "it has the second one";
}

TEST_F(EngineProcess, StopPostsTheShutdownAndProbesTwice) {
  engine.startServer();
  platform.time.advance(1);
  platform.http.requests.clear();
  engine.stopServer();
  ASSERT_EQ(platform.http.requestsTo("/api/shutdown").size(), 1U);
  const auto shutdown = platform.http.requests[0];
  EXPECT_EQ(shutdown.method, "POST");
  EXPECT_TRUE(shutdown.body.empty());
  EXPECT_EQ(shutdown.idleTimeout, 2.0);
  platform.time.advance(0.5);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U);
  platform.time.advance(1.5);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 2U);
}

TEST_F(EngineProcess, StopTerminatesAnEngineThatDoesNotObey) {
  engine.startServer();
  engine.stopServer();
  platform.time.advance(1.9);
  EXPECT_EQ(engines()[0].process->terminations, 0);
  platform.time.advance(0.2);
  EXPECT_EQ(engines()[0].process->terminations, 1);
  EXPECT_TRUE(starts()) << "it has none";
}

TEST_F(EngineProcess, StoppedEngineRaisesNoAlertEvenWhenItFailsEarly) {
  engine.startServer();
  engine.stopServer();
  engines()[0].process->exit(3);
  platform.time.advance(10);
  EXPECT_TRUE(platform.alerts.shown.empty());
  EXPECT_EQ(engines()[0].process->terminations, 0);
}

TEST_F(EngineProcess, StopWithoutAChildStillAsksTheEngineToEnd) {
  engine.stopServer();
  platform.time.advance(3);
  EXPECT_EQ(platform.http.requestsTo("/api/shutdown").size(), 1U);
}

TEST_F(EngineProcess, NextStartClearsTheStop) {
  engine.startServer();
  engine.stopServer();
  platform.time.advance(3);
  engine.startServer();
  ASSERT_EQ(engines().size(), 2U);
  engines()[1].process->exit(1);
  platform.time.runDue();
  EXPECT_EQ(platform.alerts.shown.size(), 1U) << "that it stopped straight after starting";
}

TEST_F(EngineProcess, IsProbedBeforeTheEarlyExitIsTold) {
  engineDoes({"", 1, ""});
  std::size_t probesWhenTold = 0;
  platform.alerts.whileUp = [&](const AlertContent&) {
    probesWhenTold = platform.http.requestsTo("/api/state").size();
  };
  engine.startServer();
  platform.time.runDue();
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(probesWhenTold, 1U);
}

TEST_F(EngineProcess, EarlyExitWithoutALogOfItsOwnShowsWhatTheLogHolds) {
  platform.files.put(kLog, "what an earlier run wrote\n");
  platform.files.unwritable.insert(kLog);
  engineDoes({"", 1, ""});
  engine.startServer();
  platform.time.runDue();
  EXPECT_NE(lastAlert().find("\n\nwhat an earlier run wrote\n\n"), std::string::npos);
}

// The exit of the engine that ran before comes while the failure of the next launch is told.
TEST_F(EngineProcess, FailedLaunchKeepsTheChildAndIsNotProbed) {
  engine.startServer();
  platform.time.advance(10);
  platform.http.requests.clear();
  engines()[0].process->exit(0);
  engineDoes({"", std::nullopt, "Permission denied"});
  engine.startServer();
  platform.time.runDue();
  EXPECT_EQ(lastAlert(), "Could not start the server: Permission denied");
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U) << "of the exit of the child";
  platform.time.advance(5);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U);
}

TEST_F(EngineProcess, ExitDuringAStopIsIgnored) {
  engine.startServer();
  platform.time.advance(1);
  engine.stopServer();
  platform.http.requests.clear();
  engines()[0].process->exit(0);
  platform.time.advance(0.4);
  EXPECT_TRUE(platform.http.requestsTo("/api/state").empty());
  platform.time.advance(0.2);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U);
}

// The stopped engine exits with a failure while the reason why no other starts is told.
TEST_F(EngineProcess, StopLastsUntilScriptAndPythonAreFound) {
  for (const bool isScriptMissing : {true, false}) {
    platform.files.put("/Library/Developer/CommandLineTools/usr/bin/python3", "");
    platform.bundle.resources["torvane.py"] = kBundled;
    engine.startServer();
    const auto process = engines().back().process;
    engine.stopServer();
    process->exit(3);
    if (isScriptMissing) platform.bundle.resources.clear();
    if (!isScriptMissing) platform.files.contents.clear();
    platform.alerts.shown.clear();
    engine.startServer();
    platform.time.advance(3);
    ASSERT_EQ(platform.alerts.shown.size(), 1U);
    EXPECT_EQ(lastAlert(), isScriptMissing
                               ? "Cannot find torvane.py next to the app or in the bundle."
                               : kMacPython.missing);
  }
}

TEST_F(EngineProcess, TwoSecondsAfterAStopThereIsNoChildWhateverWasStartedMeanwhile) {
  engine.startServer();
  engine.stopServer();
  engines()[0].process->exit(0);
  platform.time.advance(1);
  engine.startServer();
  ASSERT_EQ(engines().size(), 2U);
  engine.startServer();
  EXPECT_EQ(engines().size(), 2U) << "the second one is the child";
  platform.time.advance(1.1);
  EXPECT_EQ(engines()[1].process->terminations, 0);
  engine.startServer();
  EXPECT_EQ(engines().size(), 3U) << "there is none";
}

}  // namespace
}  // namespace torvane
