#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/posix/unique_fd.h"

namespace torvane::bench {

// The engine's port is the program's, so nothing else may hold it during a run.
[[nodiscard]] bool isEnginePortFree();

// An engine on its port, gone with the object.
class Engine {
 public:
  virtual ~Engine() = default;
};

// The engine that ships with the program. None when it does not come up.
[[nodiscard]] std::unique_ptr<Engine> startPythonEngine(const std::string& script);

// As quick an engine as can be: one thread, which answers every request at once, with the same
// state if nothing else is said.
class FastEngine final : public Engine {
 public:
  // The body of the answer for a request's target. On the engine's thread.
  using Bodies = std::function<std::string(std::string_view target)>;

  // None when it cannot listen.
  [[nodiscard]] static std::unique_ptr<Engine> start();
  [[nodiscard]] static std::unique_ptr<Engine> start(Bodies bodies);

  FastEngine(UniqueFd listener, Bodies bodies);
  ~FastEngine() override;
  FastEngine(const FastEngine&) = delete;
  FastEngine& operator=(const FastEngine&) = delete;

 private:
  struct Connection {
    UniqueFd socket;
    std::string unread;
  };

  void run();
  void accept();
  bool answer(Connection& connection) const;  // false: it ended

  UniqueFd listener_;
  UniqueFd ending_;
  Bodies bodies_;
  std::vector<Connection> connections_;
  std::thread thread_;  // last: it uses the members above
};

// One keep-alive connection straight to the engine, with plain blocking calls.
class RawHttp {
 public:
  [[nodiscard]] bool connect();

  // Sends GET and waits for the answer; whether it was a 200.
  [[nodiscard]] bool get(const std::string& path);

 private:
  UniqueFd socket_;
  std::string received_;
};

}  // namespace torvane::bench
