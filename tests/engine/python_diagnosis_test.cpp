#include "engine/python_diagnosis.h"

#include <gtest/gtest.h>

#include "fakes/simulated_platform.h"

namespace torvane {
namespace {

class PythonDiagnosis : public testing::Test {
 protected:
  SimulatedPlatform platform;

  void probeSays(FakeProgram program) {
    platform.processes.program = [program](const ProcessLaunch&) { return program; };
  }
  std::optional<std::string> problem(const PythonSystem& system = kMacPython) {
    return pythonProblem(system, platform.files, platform.processes, platform.backgroundQueue);
  }
};

TEST_F(PythonDiagnosis, FindsNothingWrongWithAWorkingPython) {
  EXPECT_EQ(problem(), std::nullopt);
  ASSERT_EQ(platform.processes.launched.size(), 1U);
  const auto& launch = platform.processes.launched[0].launch;
  EXPECT_EQ(launch.executable, "/usr/bin/python3");
  EXPECT_EQ(launch.arguments, std::vector<std::string>{"--version"});
  EXPECT_EQ(launch.output, ProcessOutput::pipe);
}

TEST_F(PythonDiagnosis, WithoutDeveloperToolsStartsNothing) {
  platform.files.contents.clear();
  EXPECT_EQ(problem(),
            "One more step: macOS needs a small free Apple component (the “Command Line Tools”) to "
            "run the PowerPoint server.\n\nOpen Terminal, run `xcode-select --install`, click "
            "Install and let it finish, then choose “Start Server” from this app's menu bar icon. "
            "(If macOS offers to install it for you, that works too.)");
  EXPECT_TRUE(platform.processes.launched.empty());
}

TEST_F(PythonDiagnosis, WithXcodeAloneTheProbeStillRuns) {
  platform.files.contents.clear();
  platform.files.put("/Applications/Xcode.app", "");
  EXPECT_EQ(problem(), std::nullopt);
  EXPECT_EQ(platform.processes.launched.size(), 1U);
}

TEST_F(PythonDiagnosis, ProbeThatCannotStartIsNamed) {
  probeSays({"", std::nullopt, "No such file or directory"});
  EXPECT_EQ(problem(), "Could not run /usr/bin/python3: No such file or directory");
}

TEST_F(PythonDiagnosis, ZeroExitIsFineWhateverTheOutputSays) {
  probeSays({"You have not agreed to the license", 0, ""});
  EXPECT_EQ(problem(), std::nullopt);
}

TEST_F(PythonDiagnosis, LicenseInAnyCaseAsksToAcceptIt) {
  probeSays({"You have not agreed to the Xcode LICENSE agreements\n", 69, ""});
  EXPECT_EQ(problem(),
            "Xcode's licence agreement needs accepting again. An Xcode update re-armed it, and "
            "until it is accepted macOS refuses to run Python, so the PowerPoint server can't "
            "start.\n\nOpen Terminal, run `sudo xcodebuild -license accept`, enter your password, "
            "then choose “Start Server” from this app's menu bar icon.");
}

// The tools write the word as it is written in America.
TEST_F(PythonDiagnosis, LicenceInItsOtherSpellingIsAnyFailure) {
  probeSays({"You have not agreed to the licence", 69, ""});
  EXPECT_EQ(problem(),
            "macOS refused to run Python, so the PowerPoint server can't start.\n\n"
            "/usr/bin/python3 --version said:\nYou have not agreed to the licence");
}

TEST_F(PythonDiagnosis, OtherFailureShowsTheTrimmedOutput) {
  probeSays({" \n xcrun: error: broken\n\n", 1, ""});
  EXPECT_EQ(problem(),
            "macOS refused to run Python, so the PowerPoint server can't "
            "start.\n\n/usr/bin/python3 --version said:\nxcrun: error: broken");
}

TEST_F(PythonDiagnosis, OutputThatIsNotUtf8CountsAsNone) {
  probeSays({"\xFF\xFE license", 1, ""});
  EXPECT_EQ(problem(),
            "macOS refused to run Python, so the PowerPoint server can't "
            "start.\n\n/usr/bin/python3 --version said:\n");
}

TEST_F(PythonDiagnosis, EndlessOutputIsCut) {
  probeSays({std::string(100'000, 'x'), 1, ""});
  EXPECT_LT(problem()->size(), 2200U);
}

TEST_F(PythonDiagnosis, HangingProbeIsEndedAfterFiveSeconds) {
  probeSays({"", std::nullopt, ""});
  EXPECT_NE(problem(), std::nullopt);
  EXPECT_EQ(platform.processes.launched[0].process->terminations, 1);
  EXPECT_NEAR(platform.time.now(), 5.0, 0.2);
}

TEST_F(PythonDiagnosis, LinuxLooksForThePythonItself) {
  EXPECT_EQ(problem(kLinuxPython),
            "One more step: the presentation server needs Python 3, and /usr/bin/python3 is not "
            "there.\n\nOpen a terminal, run `sudo apt install python3` (or install the package "
            "“python3” in your system's own way), then choose “Start Server” from this app's "
            "status icon.");
  platform.files.put("/usr/bin/python3", "");
  EXPECT_EQ(problem(kLinuxPython), std::nullopt);
}

TEST_F(PythonDiagnosis, LinuxKnowsNoLicence) {
  platform.files.put("/usr/bin/python3", "");
  probeSays({"license", 1, ""});
  EXPECT_EQ(problem(kLinuxPython),
            "This computer refused to run Python, so the presentation server can't "
            "start.\n\n/usr/bin/python3 --version said:\nlicense");
}

}  // namespace
}  // namespace torvane
