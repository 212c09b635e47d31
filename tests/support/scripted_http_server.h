#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace torvane {

// A server on the loopback address that does what a test's script says, byte by byte, once for
// each connection and each on its own thread. Destruction ends every connection.
class ScriptedHttpServer {
 public:
  class Connection {
   public:
    Connection(ScriptedHttpServer& server, int socket, int index)
        : number(index), server_(server), socket_(socket) {}

    // The next request, head and body as received; none when the client has closed.
    std::optional<std::string> readRequest();

    // Takes this many bytes off the connection, a piece after each pause.
    void readSlowly(std::size_t bytes, std::size_t piece, std::chrono::milliseconds pause);

    bool send(std::string_view bytes);
    void close();  // for the client to see at once

    // False when the client closes, or sends more, before the time is over.
    bool staysQuietFor(std::chrono::milliseconds time);
    void waitForClose();

    [[nodiscard]] int descriptor() const { return socket_; }

    const int number;  // from 0

   private:
    bool receiveMore();

    ScriptedHttpServer& server_;
    const int socket_;
    std::string received_;
  };

  using Script = std::function<void(Connection&)>;

  explicit ScriptedHttpServer(Script script);
  ~ScriptedHttpServer();
  ScriptedHttpServer(const ScriptedHttpServer&) = delete;
  ScriptedHttpServer& operator=(const ScriptedHttpServer&) = delete;

  // Gives the same answer to each request of a connection.
  static Script answering(std::string response);

  [[nodiscard]] std::uint16_t port() const { return port_; }
  [[nodiscard]] std::string url(std::string_view path = "/") const;
  [[nodiscard]] int connections() const { return connections_; }
  [[nodiscard]] std::vector<std::string> requests() const;

 private:
  void accept();
  void serve(int socket, int number);

  Script script_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<int> connections_ = 0;

  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::vector<int> sockets_;  // closed last of all, so that no number is used twice
  std::vector<std::thread> threads_;
  bool ending_ = false;
  std::thread acceptor_;
};

// A complete answer with a length.
[[nodiscard]] std::string httpAnswer(std::string_view body, std::string_view headers = {},
                                     std::string_view status = "200 OK");

}  // namespace torvane
