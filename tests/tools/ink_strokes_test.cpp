#include "torvane_ipad/ink_strokes.h"

#include <gtest/gtest.h>

namespace torvane::ipad {
namespace {

TEST(InkStrokes, ReadsAPointPerLineInSeveralWays) {
  const auto file = parseStrokes("0.1 0.2\n\t-0.5,1e-1\r\n3 ,  4\n1\t2");
  EXPECT_EQ(file.wrongLine, 0U);
  EXPECT_EQ(file.strokes, (Strokes{{{0.1, 0.2}, {-0.5, 0.1}, {3, 4}, {1, 2}}}));
}

TEST(InkStrokes, EmptyLinesEndAStroke) {
  const auto file = parseStrokes("\n\n1 1\n2 2\n \n\n3 3\n\n");
  EXPECT_EQ(file.strokes, (Strokes{{{1, 1}, {2, 2}}, {{3, 3}}}));
}

TEST(InkStrokes, CommentsEndNoStroke) {
  const auto file = parseStrokes("# first\n1 1 # here\n  # between\n2 2\n");
  EXPECT_EQ(file.strokes, (Strokes{{{1, 1}, {2, 2}}}));
}

TEST(InkStrokes, NamesTheFirstLineThatIsNoPoint) {
  EXPECT_EQ(parseStrokes("").wrongLine, 0U);
  for (const auto* line : {"1", "x y", "1 2 3", "1-2", "1 nan", "inf 1", "1 1e999", "1;2"}) {
    const auto file = parseStrokes("1 1\n\n" + std::string(line) + "\n1\n");
    EXPECT_EQ(file.wrongLine, 3U) << line;
    EXPECT_TRUE(file.strokes.empty()) << line;
  }
}

TEST(InkStrokes, EventsBeginEachStrokeUnderAnIdOfItsOwn) {
  const auto events = strokeEvents({{{0.5, 1}, {2, 3}}, {{4, 5}}}, 7);
  const auto expected = parseJson(R"([{"t":"begin","id":7,"x":0.5,"y":1.0},
      {"t":"pt","id":7,"x":2.0,"y":3.0},{"t":"begin","id":8,"x":4.0,"y":5.0}])");
  EXPECT_EQ(JsonValue(events), expected);
}

JsonArray numbers(int count) {
  JsonArray array;
  for (int i = 0; i < count; ++i) array.push_back(i);
  return array;
}

std::vector<std::size_t> sizesOf(const std::vector<JsonArray>& parts) {
  std::vector<std::size_t> sizes;
  for (const auto& part : parts) sizes.push_back(part.size());
  return sizes;
}

using Sizes = std::vector<std::size_t>;

TEST(InkStrokes, SharesEventsOutEvenlyAndInOrder) {
  const auto parts = sharedOut(numbers(10), 3, 100);
  EXPECT_EQ(sizesOf(parts), (Sizes{3, 3, 4}));
  JsonArray together;
  for (const auto& part : parts) together.insert(together.end(), part.begin(), part.end());
  EXPECT_EQ(together, numbers(10));
}

TEST(InkStrokes, SharesOutMorePartsWhereTheyWouldBeTooLarge) {
  EXPECT_EQ(sizesOf(sharedOut(numbers(10), 1, 4)), (Sizes{3, 3, 4}));
}

TEST(InkStrokes, SharesOutNoEmptyParts) {
  EXPECT_EQ(sizesOf(sharedOut(numbers(2), 25, 100)), (Sizes{1, 1}));
  EXPECT_EQ(sizesOf(sharedOut({}, 25, 100)), Sizes{});
}

}  // namespace
}  // namespace torvane::ipad
