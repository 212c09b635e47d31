// An engine that announces another picture with every answer.

#include "fakes/ink_test.h"

namespace torvane {
namespace {

class PictureFlood : public InkTest {
 protected:
  void SetUp() override {
    InkTest::SetUp();
    platform.http.server = [this](const HttpRequest& request) {
      if (request.url.find("/api/ink/overlay") != std::string::npos)
        return FakeAnswer{pictureNow()};
      return FakeAnswer{httpResult(200, R"({"seq":1,"overlayV":)" + std::to_string(version) + "}")};
    };
    platform.pictures.secondsPerPicture = 1;
    main.every(0.08, [this] { ink.inkTick(); });
    platform.time.advance(4);
  }

  // An answer of this many versions, one per poll, from the next on.
  void announce(int versions) {
    for (int i = 0; i < versions; ++i) {
      ++version;
      platform.time.advance(0.08);
    }
  }
  HttpResult pictureNow() const {
    return httpResult(hasPicture ? 200 : 404, "picture " + std::to_string(version));
  }
  std::string shownPicture() const {
    const auto* file = dynamic_cast<const FakePicture*>(view.overlayImage.get());
    return file != nullptr ? file->file : "none";
  }

  int version = 0;
  bool hasPicture = true;
};

TEST_F(PictureFlood, EndsWithTheNewestAndDecodesFewOfTheRest) {
  platform.pictures.decoded = 0;
  announce(100);                // in 8 s
  platform.time.advance(2.01);  // the one that is being decoded, and the newest
  EXPECT_EQ(shownPicture(), "picture 100");
  EXPECT_LE(platform.pictures.decoded, 11);
  EXPECT_GE(platform.pictures.decoded, 8);
}

TEST_F(PictureFlood, ShowsWhatIsDecodedMeanwhile) {
  announce(50);
  EXPECT_NE(shownPicture(), "none");
  EXPECT_NE(shownPicture(), "picture 50");
}

TEST_F(PictureFlood, EndsWithNoneWhereTheNewestIsNone) {
  announce(50);
  hasPicture = false;
  announce(1);
  platform.time.advance(2.01);
  EXPECT_EQ(shownPicture(), "none");
}

TEST_F(PictureFlood, OnePictureAfterItIsShownAsUsual) {
  announce(50);
  platform.time.advance(5);
  announce(1);
  platform.time.advance(1.01);
  EXPECT_EQ(shownPicture(), "picture 51");
}

}  // namespace
}  // namespace torvane
