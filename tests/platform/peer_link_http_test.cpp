#include "platform/linux/peer_link_http.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

LinkRequest upgrade() {
  LinkRequest request;
  request.method = "GET";
  request.target = "/link";
  request.host = "desk.local:48484";
  request.isUpgrade = true;
  request.version = LinkVersion::two;
  return request;
}

const OwnHosts& desk() {
  static const OwnHosts own{48484, "desk", {"127.0.0.1", "192.168.1.20", "fe80::1"}};
  return own;
}

LinkRequest fromOrigin(std::string_view origin) {
  LinkRequest request = upgrade();
  request.origin = origin;
  request.originCount = 1;
  return request;
}

LinkRequest fromPageOf(std::string_view origin) {
  LinkRequest request = fromOrigin(origin);
  request.host = origin.substr(origin.find("//") + 2);
  return request;
}

TEST(PeerLinkHttp, UpgradesWithoutAnOrigin) {
  EXPECT_EQ(answerTo(upgrade(), desk()).status, 101U);
}

TEST(PeerLinkHttp, UpgradesPagesOfItsOwn) {
  EXPECT_EQ(answerTo(fromOrigin("https://desk.local:48484"), desk()).status, 101U);
  EXPECT_EQ(answerTo(fromOrigin("https://DESK.local:48484"), desk()).status, 101U);
}

TEST(PeerLinkHttp, RefusesOtherOrigins) {
  for (const char* origin :
       {"", "null", "https://evil.example", "http://desk.local:48484", "https://desk.local",
        "https://desk.local:484841", "https://desk.local:48484.evil.example", "https://"}) {
    EXPECT_EQ(answerTo(fromOrigin(origin), desk()).status, 403U) << origin;
  }
}

TEST(PeerLinkHttp, UpgradesPagesOfEachOfItsNames) {
  for (const char* origin :
       {"https://desk.local:48484", "https://desk:48484", "https://localhost:48484",
        "https://192.168.1.20:48484", "https://[fe80::1]:48484", "https://127.0.0.1:48484"}) {
    EXPECT_EQ(answerTo(fromPageOf(origin), desk()).status, 101U) << origin;
  }
}

// The page's own name points to this computer; the browser takes it for the same origin.
TEST(PeerLinkHttp, RefusesPagesThatCallItByAnotherName) {
  for (const char* origin :
       {"https://evil.example:48484", "https://evil.example", "https://192.168.1.21:48484",
        "https://desk.local:8443", "https://desk.local.evil.example:48484"}) {
    EXPECT_EQ(answerTo(fromPageOf(origin), desk()).status, 403U) << origin;
  }
}

// Through a tunnel, or under a name that only the network knows.
TEST(PeerLinkHttp, LetsProgramsThatAreNoBrowsersCallItWhatTheyLike) {
  for (const char* host : {"evil.example", "localhost:9000", "desk.lan:48484", ""}) {
    LinkRequest request = upgrade();
    request.host = host;
    EXPECT_EQ(answerTo(request, desk()).status, 101U) << host;
  }
}

TEST(PeerLinkHttp, RefusesSeveralOriginsAndAnOriginWithoutHost) {
  LinkRequest request = fromOrigin("https://desk.local:48484");
  request.originCount = 2;
  EXPECT_EQ(answerTo(request, desk()).status, 403U);
  request = fromOrigin("https://");
  request.host = "";
  EXPECT_EQ(answerTo(request, desk()).status, 403U);
}

TEST(PeerLinkHttp, NeedsTargetAndSubprotocol) {
  LinkRequest request = upgrade();
  request.version.reset();
  EXPECT_EQ(answerTo(request, desk()).status, 400U);
  request.target = "/";
  EXPECT_EQ(answerTo(request, desk()).status, 404U);
}

TEST(PeerLinkHttp, AnswersOnePlainPage) {
  LinkRequest request;
  request.method = "GET";
  request.target = "/";
  const auto answer = answerTo(request, desk());
  EXPECT_EQ(answer.status, 200U);
  EXPECT_NE(answer.body.find("Torvane P2P Helper"), std::string_view::npos);
  request.target = "/link";
  EXPECT_EQ(answerTo(request, desk()).status, 404U);
  request.method = "POST";
  EXPECT_EQ(answerTo(request, desk()).status, 405U);
}

}  // namespace
}  // namespace torvane
