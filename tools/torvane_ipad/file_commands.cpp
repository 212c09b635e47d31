// What is saved in a file: the picture of a slide, all slides as a PDF.

#include <chrono>

#include "torvane_ipad/commands.h"
#include "torvane_ipad/engine_session.h"
#include "torvane_ipad/interrupt.h"
#include "torvane_ipad/output_file.h"
#include "torvane_ipad/progress_line.h"
#include "torvane_ipad/state_text.h"

namespace torvane::ipad {
namespace {

// A picture takes 10 s at most, after another one that is being made.
constexpr auto kPicturePatience = std::chrono::seconds(25);
// As long as the helper waits for the engine's answer.
constexpr auto kDownloadPatience = std::chrono::seconds(300);
constexpr std::chrono::duration<double> kPause(0.25);
constexpr int kMostIdleLooks = 8;  // until an export that was asked for must have begun

std::string sizeText(std::size_t bytes) {
  constexpr std::size_t kKilo = 1000;
  if (bytes < 10 * kKilo) return std::to_string(bytes) + " bytes";
  if (bytes < 10 * kKilo * kKilo) return std::to_string(bytes / kKilo) + " kB";
  return std::to_string(bytes / kKilo / kKilo) + " MB";
}

// Writes the answer's body. `what` is it, for the sentence.
Exit save(const Reply& reply, const std::string& file, const std::string& what,
          const Console& console) {
  if (!writeOutput(file, asText(reply.body))) return console.fail(Exit::usage, cannotWrite(file));
  if (file == "-") return Exit::ok;
  console.say("saved", "Saved " + what + " in " + file + ", " + sizeText(reply.body.size()) + ".",
              {{"file", file}, {"bytes", reply.body.size()}});
  return Exit::ok;
}

std::string picturePath(const Options& options) {
  const std::string path = "/api/slides/" + std::to_string(options.slide) + "/picture";
  return options.width == 0 ? path : path + "?width=" + std::to_string(options.width);
}

// Why there is no picture of this slide.
std::string pictureProblem(EngineSession& session, const Reply& reply, std::uint32_t slide) {
  constexpr std::int64_t kNotFound = 404;
  constexpr std::int64_t kUnavailable = 503;
  const std::string name = std::to_string(slide);
  if (reply.status == kNotFound) {
    return "There is no slide " + name + ". \"torvane-ipad slides\" lists those that there are.";
  }
  if (reply.status == kUnavailable) {
    const auto state = session.get("/api/state");
    const std::string why = state ? textOf(*state, "problem") : "";
    return "The picture of slide " + name + " cannot be made now. " +
           (why.empty() ? "Try again in a moment." : why);
  }
  return session.problemOf(reply);
}

// Waits for the PDF that was asked for.
class ExportWait {
 public:
  ExportWait(EngineSession& session, const Console& console)
      : session_(session), console_(console), line_(console) {}

  // Whether it is there; else the reason was reported.
  bool untilDone(JsonObject state) {
    noticeInterrupts();
    while (true) {
      if (const auto isDone = look(objectMember(state, "export"))) return *isDone;
      sleepUnlessInterrupted(kPause);
      if (wasInterrupted()) return refuse("Interrupted. Nothing was saved.");
      auto next = session_.get("/api/state");
      if (!next) return false;
      state = std::move(*next);
    }
  }

 private:
  // None while it is on its way.
  std::optional<bool> look(const JsonObject& made) {
    const std::string state = textOf(made, "state");
    if (state == "done") return true;
    if (state == "failed") return refuse(describeExport(made));
    if (state == "running") {
      tell(made);
    } else if (state == "waiting") {
      await(describeExport(made));
    } else if (++idleLooks_ == kMostIdleLooks) {
      return refuse("The engine has made no PDF; it may have been started anew. Try again.");
    }
    return std::nullopt;
  }

  void tell(const JsonObject& made) {
    JsonObject fact = objectMember(made, "progress");
    if (!fact.empty()) line_.show(describeExport(made), fact);
  }

  // Said once, whoever looks: it may take until the talk is over.
  void await(const std::string& sentence) {
    if (sentence == awaited_) return;
    awaited_ = sentence;
    line_.clear();
    console_.note(sentence);
  }

  bool refuse(const std::string& sentence) {
    line_.clear();
    session_.fail(sentence);
    return false;
  }

  EngineSession& session_;
  const Console& console_;
  ProgressLine line_;
  std::string awaited_;
  int idleLooks_ = 0;
};

}  // namespace

Exit savePicture(const Options& options, const Console& console) {
  const std::string& file = options.operands[1];
  if (const auto problem = outputProblem(file); !problem.empty()) {
    return console.fail(Exit::usage, problem);
  }
  EngineSession session(options, console);
  const auto reply = session.isOpen()
                         ? session.ask({.path = picturePath(options)}, kPicturePatience)
                         : std::nullopt;
  if (!reply) return session.exit();
  const std::string problem = pictureProblem(session, *reply, options.slide);
  if (!problem.empty()) return session.fail(problem);
  const std::string kind = reply->contentType == "image/jpeg" ? "JPEG" : "PNG";
  return save(*reply, file, "slide " + std::to_string(options.slide) + " as a " + kind + " picture",
              console);
}

Exit exportSlides(const Options& options, const Console& console) {
  const std::string& file = options.operands[0];
  if (const auto problem = outputProblem(file); !problem.empty()) {
    return console.fail(Exit::usage, problem);
  }
  EngineSession session(options, console);
  const auto state = session.isOpen() ? session.post("/api/export") : std::nullopt;
  if (!state || !ExportWait(session, console).untilDone(*state)) return session.exit();
  const auto reply = session.ask({.path = "/api/export"}, kDownloadPatience);
  if (!reply) return session.exit();
  const std::string problem = session.problemOf(*reply);
  if (!problem.empty()) return session.fail(problem);
  return save(*reply, file, "the slides as a PDF", console);
}

}  // namespace torvane::ipad
