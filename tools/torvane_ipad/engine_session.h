#pragma once

#include <memory>
#include <optional>
#include <string>

#include "torvane_ipad/console.h"
#include "torvane_ipad/reach_helper.h"
#include "torvane_ipad/signed_requests.h"

namespace torvane::ipad {

// A session through which the engine is asked. What goes wrong is reported; then exit() says what
// it was.
class EngineSession {
 public:
  using Duration = HelperSession::Duration;

  EngineSession(const Options& options, const Console& console);

  [[nodiscard]] bool isOpen() const { return session_ != nullptr; }
  [[nodiscard]] Exit exit() const { return exit_; }

  // What the helper calls itself, for a sentence.
  [[nodiscard]] std::string helperName() const;

  // The answer, whatever it says; none when there was none. Waits for it as long as --timeout says,
  // or for `patience` where that is longer.
  [[nodiscard]] std::optional<Reply> ask(const Request& request, Duration patience = {});

  // A sentence about an answer that says that something went wrong; empty for others. May ask the
  // engine for its state to find out.
  [[nodiscard]] std::string problemOf(const Reply& reply);

  // The object in a good answer.
  [[nodiscard]] std::optional<JsonObject> get(const std::string& path);
  [[nodiscard]] std::optional<JsonObject> post(const std::string& path,
                                               const JsonObject& body = {});
  [[nodiscard]] std::optional<JsonObject> objectIn(const Reply& reply);

  // Reports why the command does not go on. Gives Exit::refused back.
  Exit fail(const std::string& sentence);

 private:
  [[nodiscard]] bool isEngineOff();

  const Console& console_;
  Exit exit_ = Exit::ok;
  std::unique_ptr<HelperReach> reach_;
  std::unique_ptr<HelperSession> session_;
};

// POST with a JSON object, or without a body where it is empty.
[[nodiscard]] Request actionRequest(const std::string& path, const JsonObject& body);

}  // namespace torvane::ipad
