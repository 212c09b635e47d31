// A signed request on its way from a peer to the engine and back through the real core, against
// what no implementation could leave out: the way there and back on the link, the check of one
// signature, and the engine's own answer.

#include <sodium.h>
#include <time.h>

#include <QCoreApplication>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <mutex>

#include "bench_peer.h"
#include "bridge/engine_request.h"
#include "engines.h"
#include "hosts.h"
#include "measure.h"

namespace torvane::bench {
namespace {

constexpr int kRounds = 60;
constexpr int kRequestsPerRound = 100;
constexpr int kRequestsAtOnce = 2000;
constexpr int kThroughputRounds = 5;

void require(bool worked, const char* what) {
  if (worked) return;
  std::fflush(stdout);
  std::fprintf(stderr, "bridge_bench: %s failed\n", what);
  std::_Exit(1);
}

// All times of one kind, and the median of each round.
struct Times {
  std::vector<double> all;
  std::vector<double> rounds;

  void add(std::vector<double> round) {
    all.insert(all.end(), round.begin(), round.end());
    rounds.push_back(percentile(std::move(round), 0.5));
  }
  [[nodiscard]] double median() const { return percentile(rounds, 0.5); }
  [[nodiscard]] double p99() const { return percentile(all, 0.99); }
};

template <typename Call>
std::vector<double> timesOf(Call call) {
  std::vector<double> times;
  times.reserve(kRequestsPerRound);
  for (int i = 0; i < kRequestsPerRound; ++i) {
    const auto start = Clock::now();
    call();
    times.push_back(microsecondsSince(start));
  }
  return times;
}

// The program's HTTP client by itself: asks from this thread and waits for the completion.
class HttpAlone {
 public:
  [[nodiscard]] bool get() {
    session_->dataTask(forwardedRequest({1, "/api/state", "GET", {}, {}}),
                       [this](const HttpResult& result) {
                         const std::lock_guard lock(mutex_);
                         answered_ = true;
                         succeeded_ = result.response && result.response->status == 200;
                         arrived_.notify_one();
                       });
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return answered_; });
    answered_ = false;
    return succeeded_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  bool answered_ = false;
  bool succeeded_ = false;
  CurlHttpSessions sessions_;
  std::unique_ptr<HttpSession> session_ = sessions_.makeEphemeral(60);
};

// What one peer's request at a time takes, beside its parts.
struct Latencies {
  Times bridged, engine, link, verification;  // the last three are the floor
  Times linkAndQueue, http;                   // where the rest goes

  [[nodiscard]] double floor() const {
    return engine.median() + link.median() + verification.median();
  }
};

struct Hosts {
  BridgeHost bridge;
  EchoHost echo{EchoHost::Way::straight};
  EchoHost echoByQueue{EchoHost::Way::mainQueue};
};

void exchange(BenchPeer& peer) {
  require(peer.send() && peer.receive(), "a message to an echoing link");
}

using Peers = std::vector<std::unique_ptr<BenchPeer>>;

// Just before they are needed: a peer that reads nothing for seconds answers no ping, and is
// dropped.
Peers joinedPeers(Hosts& hosts, std::size_t count) {
  Peers peers;
  for (std::size_t i = 0; i < count; ++i) {
    const auto number = static_cast<std::uint8_t>(i + 1);
    peers.push_back(std::make_unique<BenchPeer>(hosts.bridge.port(), number));
    require(peers.back()->join() && peers.back()->authenticate(), "pairing");
  }
  return peers;
}

Latencies measureLatencies(Hosts& hosts) {
  const Peers peers = joinedPeers(hosts, 1);
  BenchPeer& peer = *peers.front();
  BenchPeer echoed(hosts.echo.port(), 101);
  BenchPeer echoedByQueue(hosts.echoByQueue.port(), 102);
  RawHttp engine;
  HttpAlone http;
  require(echoed.join() && echoedByQueue.join() && engine.connect(), "connecting");
  Latencies found;
  for (int round = -1; round < kRounds; ++round) {
    for (BenchPeer* each : {&peer, &echoed, &echoedByQueue}) each->prepare(kRequestsPerRound);
    const Bytes message = peer.signedMessage();
    const Bytes signature = peer.signature();
    const Bytes key = peer.rawKey();
    std::optional<Bytes> reply;
    const auto bridged = timesOf([&] {
      require(peer.send(), "sending");
      reply = peer.receive();
    });
    require(isSuccess(reply), "a bridged request");
    auto direct = timesOf([&] { require(engine.get("/api/state"), "a request to the engine"); });
    auto link = timesOf([&] { exchange(echoed); });
    auto verification = timesOf([&] {
      require(crypto_sign_verify_detached(signature.data(), message.data(), message.size(),
                                          key.data()) == 0,
              "a verification");
    });
    auto byQueue = timesOf([&] { exchange(echoedByQueue); });
    auto byHttp = timesOf([&] { require(http.get(), "a request by the HTTP session"); });
    if (round < 0) continue;  // everything is warm now
    found.bridged.add(bridged);
    found.engine.add(std::move(direct));
    found.link.add(std::move(link));
    found.verification.add(std::move(verification));
    found.linkAndQueue.add(std::move(byQueue));
    found.http.add(std::move(byHttp));
  }
  return found;
}

double secondsOf(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Throughput {
  double perSecond;
  double mainThread;  // microseconds of the main thread's time for each request
  double process;     // likewise of the whole process, peers and quick engine included
};

// Keeps `inFlight` requests of each peer unanswered until all are answered.
Throughput measureThroughput(const Peers& peers, std::size_t inFlight, clockid_t mainClock) {
  const std::size_t each = kRequestsAtOnce / peers.size();
  for (const auto& peer : peers) peer->prepare(each);
  const double mainBefore = secondsOf(mainClock);
  const double processBefore = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
  const auto start = Clock::now();
  for (std::size_t sent = 0; sent < inFlight; ++sent) {
    for (const auto& peer : peers) require(peer->send(), "sending");
  }
  for (std::size_t received = 0; received < each; ++received) {
    for (const auto& peer : peers) {
      require(isSuccess(peer->receive()), "a bridged request");
      if (received + inFlight < each) require(peer->send(), "sending");
    }
  }
  const double seconds = microsecondsSince(start) * 1e-6;
  const auto count = static_cast<double>(each * peers.size());
  return {count / seconds, (secondsOf(mainClock) - mainBefore) * 1e6 / count,
          (secondsOf(CLOCK_PROCESS_CPUTIME_ID) - processBefore) * 1e6 / count};
}

void printLatencies(const Latencies& found) {
  const auto row = [](const char* what, const Times& times) {
    std::printf("  %-36s %9.1f %9.1f\n", what, times.median(), times.p99());
  };
  std::printf("  %-36s %9s %9s\n", "one request at a time, us", "p50", "p99");
  row("bridged", found.bridged);
  row("(a) straight to the engine", found.engine);
  row("(b) link, there and back", found.link);
  row("(c) signature check by the library", found.verification);
  row("    link, by way of the main queue", found.linkAndQueue);
  row("    engine, by the HTTP session", found.http);
  std::printf("  bridged / (a + b + c): %.2f\n\n", found.bridged.median() / found.floor());
}

void measureThroughputRow(const char* what, Hosts& hosts, std::size_t count, std::size_t inFlight,
                          double verification, clockid_t mainClock) {
  const Peers peers = joinedPeers(hosts, count);
  std::vector<double> perSecond;
  std::vector<double> main;
  std::vector<double> process;
  for (int round = 0; round < kThroughputRounds; ++round) {
    const Throughput found = measureThroughput(peers, inFlight, mainClock);
    perSecond.push_back(found.perSecond);
    main.push_back(found.mainThread);
    process.push_back(found.process);
  }
  const double median = percentile(perSecond, 0.5);
  std::printf("  %-24s %10.0f %18.2f %15.1f %12.1f\n", what, median, median * verification * 1e-6,
              percentile(main, 0.5), percentile(process, 0.5));
}

void measureWith(const char* engine, Hosts& hosts, clockid_t mainClock) {
  std::printf("Engine: %s\n", engine);
  const Latencies latencies = measureLatencies(hosts);
  printLatencies(latencies);
  std::printf("  %-24s %10s %18s %15s %12s\n", "in flight", "requests/s", "of (c) alone",
              "main thread us", "process us");
  const double verification = latencies.verification.median();
  measureThroughputRow("1 peer, 1 request", hosts, 1, 1, verification, mainClock);
  measureThroughputRow("8 peers, 1 request each", hosts, 8, 1, verification, mainClock);
  measureThroughputRow("1 peer, 8 requests", hosts, 1, 8, verification, mainClock);
  std::printf("\n");
}

// The main thread runs the event loop, as in the program; another one measures.
int run(const char* name, std::unique_ptr<Engine> engine) {
  require(engine != nullptr, "starting the engine");
  Hosts hosts;
  clockid_t mainClock{};
  ::pthread_getcpuclockid(::pthread_self(), &mainClock);
  std::thread measuring([&] {
    measureWith(name, hosts, mainClock);
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
  });
  const int status = QCoreApplication::exec();
  measuring.join();
  return status;
}

}  // namespace
}  // namespace torvane::bench

int main(int argc, char** argv) {
  using namespace torvane::bench;
  QCoreApplication application(argc, argv);
  if (!isEnginePortFree()) {
    std::fputs(
        "bridge_bench: port 8484 is taken, and the program knows no other for its engine.\n"
        "End what listens there (a running helper has its engine there) and start again.\n",
        stderr);
    return 1;
  }
  const int withPython =
      run("torvane.py", startPythonEngine(TORVANE_SOURCE_DIR "/resources/torvane.py"));
  return withPython != 0 ? withPython : run("a quick one, which is no engine", FastEngine::start());
}
