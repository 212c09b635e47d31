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
  request.offersSubprotocol = true;
  return request;
}

LinkRequest fromOrigin(std::string_view origin) {
  LinkRequest request = upgrade();
  request.origin = origin;
  request.originCount = 1;
  return request;
}

TEST(PeerLinkHttp, UpgradesWithoutAnOrigin) {
  EXPECT_EQ(answerTo(upgrade()).status, 101U);
}

TEST(PeerLinkHttp, UpgradesPagesOfItsOwn) {
  EXPECT_EQ(answerTo(fromOrigin("https://desk.local:48484")).status, 101U);
  EXPECT_EQ(answerTo(fromOrigin("https://DESK.local:48484")).status, 101U);
}

TEST(PeerLinkHttp, RefusesOtherOrigins) {
  for (const char* origin :
       {"", "null", "https://evil.example", "http://desk.local:48484", "https://desk.local",
        "https://desk.local:484841", "https://desk.local:48484.evil.example", "https://"}) {
    EXPECT_EQ(answerTo(fromOrigin(origin)).status, 403U) << origin;
  }
}

TEST(PeerLinkHttp, RefusesSeveralOriginsAndAnOriginWithoutHost) {
  LinkRequest request = fromOrigin("https://desk.local:48484");
  request.originCount = 2;
  EXPECT_EQ(answerTo(request).status, 403U);
  request = fromOrigin("https://");
  request.host = "";
  EXPECT_EQ(answerTo(request).status, 403U);
}

TEST(PeerLinkHttp, NeedsTargetAndSubprotocol) {
  LinkRequest request = upgrade();
  request.offersSubprotocol = false;
  EXPECT_EQ(answerTo(request).status, 400U);
  request.target = "/";
  EXPECT_EQ(answerTo(request).status, 404U);
}

TEST(PeerLinkHttp, AnswersOnePlainPage) {
  LinkRequest request;
  request.method = "GET";
  request.target = "/";
  const auto answer = answerTo(request);
  EXPECT_EQ(answer.status, 200U);
  EXPECT_NE(answer.body.find("Torvane P2P Helper"), std::string_view::npos);
  request.target = "/link";
  EXPECT_EQ(answerTo(request).status, 404U);
  request.method = "POST";
  EXPECT_EQ(answerTo(request).status, 405U);
}

}  // namespace
}  // namespace torvane
