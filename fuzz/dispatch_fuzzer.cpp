// A helper on the simulated desktop and three iPads that send, replay and mix up messages, come and
// go, while an engine answers anything. The input is the script.

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "app/bridge_delegate.h"
#include "engine/engine_requests.h"
#include "fakes/simulated_platform.h"
#include "framed.h"
#include "protocol/constants.h"
#include "require.h"
#include "support/signing_device.h"

using namespace torvane;
using fuzz::require;

namespace {

struct Pad {
  test::SigningDevice device;
  PeerID peer;
  // On this connection:
  std::set<std::int64_t> asked{};   // ids of any message
  std::set<std::int64_t> usedUp{};  // ids of signed requests
  std::size_t received = 0;
};

class Scene {
 public:
  explicit Scene(FuzzedDataProvider& script) : script_(script) {
    JsonObject paired;
    for (const auto& pad : pads_) paired[pad.device.deviceKey()] = "iPad";
    platform_.defaults.stored[PairingRegistry::pairedKey] = paired;
    helper_.emplace(platform_.ports);
    helper_->openLink();
    for (auto& pad : pads_) connect(pad);
  }

  // Fewer steps than a connection may fail verifications.
  void play() {
    for (int steps = 0; script_.remaining_bytes() > 0 && steps < 90; ++steps) {
      step(pads_.at(script_.ConsumeIntegralInRange<std::size_t>(0, pads_.size() - 1)));
      platform_.time.runDue();
      checkRequests();
      checkReplies();
    }
  }

 private:
  void step(Pad& pad) {
    switch (script_.ConsumeIntegralInRange(0, 8)) {
      case 0:
        receive(pad, toBytes(script_.ConsumeRandomLengthString()));
        break;
      case 1:
        receive(pad, test::challengeRequest(script_.ConsumeIntegral<std::int8_t>()));
        break;
      case 2:
        receiveSigned(pad, fuzz::framed(script_.ConsumeRandomLengthString()));
        break;
      case 3:
      case 4:
        receiveSigned(pad, plausibleRequest());
        break;
      case 5:
        replay(pad);
        break;
      case 6:
        reconnect(pad);
        break;
      case 7:
        platform_.time.advance(script_.ConsumeFloatingPointInRange(0.0, 200.0));
        break;
      default:
        changeEngine();
    }
  }

  void connect(Pad& pad) {
    pad.peer = platform_.peerLink.newPeer("iPad");
    pad.asked.clear();
    pad.usedUp.clear();
    pad.received = 0;
    const auto answers = platform_.peerLink.invite(pad.peer, pad.device.rawKey());
    platform_.time.runDue();
    require(answers->size() == 1 && answers->front().accept && answers->front().session,
            "a paired device is accepted");
    platform_.peerLink.current().changeState(pad.peer, PeerState::connected);
    if (!script_.ConsumeBool()) receive(pad, test::challengeRequest(0));
    platform_.time.runDue();
  }

  void reconnect(Pad& pad) {
    platform_.peerLink.current().changeState(pad.peer, PeerState::notConnected);
    platform_.time.runDue();
    const auto before = platform_.peerLink.current().sentTo(pad.peer).size();
    platform_.peerLink.current().receive(pad.peer, test::challengeRequest(0));
    platform_.time.runDue();
    require(platform_.peerLink.current().sentTo(pad.peer).size() == before,
            "a peer that has gone is not served");
    connect(pad);
  }

  void receive(Pad& pad, const Bytes& message) {
    ++pad.received;
    messages_.push_back(message);
    if (const auto frame = P2PFrame::decode(message)) {
      if (const auto id = integerMember(frame->header, "id")) pad.asked.insert(*id);
    }
    platform_.peerLink.current().receive(pad.peer, message);
  }

  void receiveSigned(Pad& pad, const Bytes& inner) {
    const auto challenge = challengeOf(pad);
    receive(pad, pad.device.envelopeAround(challenge.value_or(""), inner));
    auto frame = P2PFrame::decode(inner);
    const auto id = frame ? integerMember(frame->header, "id") : std::nullopt;
    if (!challenge || !id || !pad.usedUp.insert(*id).second) return;
    pad.asked.insert(*id);
    if (isForEngine(std::move(*frame))) ++expectedRequests_;
  }

  // As the replies to it tell.
  std::optional<std::string> challengeOf(const Pad& pad) {
    constexpr std::size_t kLength = 36;
    for (const auto& reply : platform_.peerLink.current().sentTo(pad.peer)) {
      const auto frame = P2PFrame::decode(reply);
      const auto body = frame ? parseJsonObject(asText(frame->body)) : std::nullopt;
      auto challenge = body ? stringMember(*body, "challenge") : std::nullopt;
      if (challenge && challenge->size() == kLength) return challenge;
    }
    return std::nullopt;
  }

  static bool isForEngine(P2PFrame::Frame frame) {
    const auto request = readPeerRequest(std::move(frame));
    return request && isValidURL(engineURL(request->path)) && request->path != "/p2p/bridge-info" &&
           !wireProblem(*request);
  }

  Bytes plausibleRequest() {
    JsonObject header{{"id", script_.ConsumeIntegral<std::int8_t>()}};
    header["path"] = utf8(script_.ConsumeBool() ? "/" + text() : "/p2p/bridge-info");
    if (script_.ConsumeBool()) header["method"] = utf8(text());
    if (script_.ConsumeBool()) header["contentType"] = utf8(text());
    return test::frameOf(header, toBytes(text()));
  }

  // Another iPad may send what one has sent, or the same one again.
  void replay(Pad& pad) {
    if (messages_.empty()) return;
    const auto back = script_.ConsumeIntegralInRange<std::size_t>(1, messages_.size());
    receive(pad, Bytes(messages_[messages_.size() - back]));
  }

  void changeEngine() {
    HttpResult result;
    if (script_.ConsumeBool()) result.response = HttpResponse{script_.ConsumeIntegral<int>(), {}};
    if (result.response && script_.ConsumeBool()) result.response->contentType = text();
    if (script_.ConsumeBool()) result.error = text();
    result.body = toBytes(text());
    const double delay = script_.ConsumeFloatingPointInRange(0.0, 100.0);
    platform_.http.server = [=](const HttpRequest&) { return FakeAnswer{result, delay}; };
  }

  void checkRequests() {
    const auto& requests = platform_.http.requests;
    require(requests.size() == expectedRequests_, "signed requests reach the engine, once each");
    for (; checkedRequests_ < requests.size(); ++checkedRequests_) {
      const auto& request = requests[checkedRequests_];
      require(request.onlyEndpoint == HttpEndpoint{"127.0.0.1", PORT}, "nothing else is reached");
      require(request.url.starts_with("http://127.0.0.1:8484"), "the URL begins as it must");
    }
  }

  void checkReplies() {
    const auto& session = platform_.peerLink.current();
    for (const auto& pad : pads_) {
      const auto replies = session.sentTo(pad.peer);
      require(replies.size() <= pad.received, "a message has one reply at most");
      for (const auto& reply : replies) {
        const auto frame = P2PFrame::decode(reply);
        require(frame.has_value(), "a reply is a frame");
        const auto id = integerMember(frame->header, "id");
        require(id && pad.asked.count(*id) == 1, "a reply goes to the one that asked");
        require(
            integerMember(frame->header, "status") && stringMember(frame->header, "contentType"),
            "a reply has its status and type");
      }
    }
  }

  std::string text() { return script_.ConsumeRandomLengthString(64); }
  static std::string utf8(std::string text) {
    for (char& c : text) c = static_cast<char>(static_cast<unsigned char>(c) & 0x7FU);
    return text;
  }

  FuzzedDataProvider& script_;
  SimulatedPlatform platform_;
  std::optional<BridgeDelegate> helper_;
  std::array<Pad, 3> pads_{Pad{test::SigningDevice{1}, {}}, Pad{test::SigningDevice{2}, {}},
                           Pad{test::SigningDevice{3}, {}}};
  std::vector<Bytes> messages_;
  std::size_t expectedRequests_ = 0;
  std::size_t checkedRequests_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider script(data, size);
  Scene(script).play();
  return 0;
}
