// Pictures: a file is a text here, its type and its sides, and what is decoded is written down.

#include "platform/mac/mac_picture_decoder.h"

#include <sstream>

#include "mac/on_a_mac.h"

namespace torvane {
namespace {

class MacPictures : public OnAMac {
 protected:
  void decode(const std::string& file) {
    decoder_->decode(toBytes(file), [this](const std::shared_ptr<const Picture>& picture) {
      EXPECT_FALSE([NSThread isMainThread]);
      answers_ += picture ? 'p' : '-';
    });
  }
  // Of a file's text.
  static std::string longestSide(const std::string& file) {
    std::istringstream words(file);
    std::string type;
    long width = 0, height = 0;
    words >> type >> width >> height;
    return std::to_string(std::max(width, height));
  }
  std::string answersTo(const std::vector<std::string>& files) {
    for (const auto& file : files) decode(file);
    EXPECT_EQ(answers_, "");  // not inside the call
    fake::drainQueues();
    return std::exchange(answers_, "");
  }

  std::unique_ptr<MacPictureDecoder> decoder_ = std::make_unique<MacPictureDecoder>();
  std::string answers_;
};

TEST_F(MacPictures, DecodesWhatTheEngineSends) {
  for (const char* file : {"public.png 400 300", "public.jpeg 1 1", "public.png 64000000 1"}) {
    EXPECT_EQ(answersTo({file}), "p") << file;
    EXPECT_EQ(timesSaid(std::string("decode ") + file + " with 4 to " + longestSide(file)), 1U);
  }
}

TEST_F(MacPictures, KeepsWhatTheScreensOfNowCanShow) {
  const std::string large = "public.png 8000 4000";
  EXPECT_EQ(answersTo({large}), "p");
  EXPECT_TRUE(fake::said("decode " + large + " with 4 to 960"));  // 320 x 240, two pixels a point
  fake::system().screens.push_back({{320, 0}, {1920, 1080}});
  EXPECT_EQ(answersTo({large}), "p");
  EXPECT_TRUE(fake::said("decode " + large + " with 4 to 4320"));
  fake::system().screens.clear();
  EXPECT_EQ(answersTo({large}), "p");
}

TEST_F(MacPictures, DecodesNothingThatIsTooLarge) {
  for (const char* sides : {"8001 8000", "64000001 1", "1 64000001", "9223372036854775807 3",
                            "4294967296 4294967296", "0 10", "10 0", "-5 -5", ""}) {
    EXPECT_EQ(answersTo({std::string("public.png ") + sides}), "-") << sides;
  }
  EXPECT_TRUE(fake::system().log.empty());
}

TEST_F(MacPictures, DecodesNothingButPixels) {
  for (const char* type : {"com.adobe.pdf", "public.svg-image", "com.apple.icns", "", "x"}) {
    EXPECT_EQ(answersTo({std::string(type) + " 10 10"}), "-") << type;
  }
  EXPECT_EQ(answersTo({""}), "-");
  EXPECT_TRUE(fake::system().log.empty());
}

TEST_F(MacPictures, AnswersInTheOrderOfTheCalls) {
  const std::string file = "public.png 10 10";
  EXPECT_EQ(answersTo({file, "x", file, file, file, file, file, "x"}), "p-ppppp-");
}

TEST_F(MacPictures, StopsAnExceptionOfWhoeverAsked) {
  for (int i = 0; i < 5; ++i) {
    decoder_->decode(toBytes("public.png 10 10"),
                     [](const std::shared_ptr<const Picture>&) { throw 1; });
    fake::drainQueues();
  }
  EXPECT_EQ(timesSaid("NSLog Torvane P2P Helper: an exception of unknown type"), 5U);
  EXPECT_EQ(answersTo({"public.png 10 10"}), "p");
}

TEST_F(MacPictures, WaitsForWhatIsBeingDecodedBeforeItEnds) {
  decode("public.png 10 10");
  decoder_.reset();
  EXPECT_EQ(answers_, "p");
}

}  // namespace
}  // namespace torvane
