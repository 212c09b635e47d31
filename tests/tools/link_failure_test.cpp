#include "torvane_ipad/link_failure.h"

#include <gtest/gtest.h>

namespace torvane::ipad {
namespace {

using Kind = LinkFailure::Kind;

TEST(LinkFailure, SaysWhatToDoWhenNobodyAnswers) {
  EXPECT_EQ(explain({Kind::unreachable, "no program listens there"}, "mini:48484"),
            "No helper answered at mini:48484 (no program listens there). Is Torvane P2P Helper "
            "running on that computer?");
  EXPECT_EQ(explain({Kind::unreachable, ""}, "mini:48484"),
            "No helper answered at mini:48484. Is Torvane P2P Helper running on that computer?");
}

TEST(LinkFailure, SaysHowToTrustANewCertificate) {
  const std::string text = explain({Kind::otherHelper, "abcd"}, "mini:48484");
  EXPECT_NE(text.find("nothing was sent"), text.npos);
  EXPECT_NE(text.find("pair --trust-new"), text.npos);
  EXPECT_NE(text.find("abcd"), text.npos);
}

TEST(LinkFailure, SaysHowToPairWithAnUnknownHelper) {
  EXPECT_EQ(explain({Kind::strangeHelper, "abcd"}, "mini:48484"),
            "This device was never paired with the helper at mini:48484, so nothing was sent. Run "
            "\"torvane-ipad pair\" for it first, and compare the digits that both show. Its "
            "fingerprint is abcd.");
}

TEST(LinkFailure, ExplainsEachReasonForARefusal) {
  const auto refusal = [](const char* reason) {
    return explain({Kind::refused, reason}, "mini:48484");
  };
  EXPECT_NE(refusal("declined").find("chose not to pair"), std::string::npos);
  EXPECT_NE(refusal("proof").find("proof"), std::string::npos);
  EXPECT_NE(refusal("name").find("--name"), std::string::npos);
  EXPECT_NE(refusal("busy").find("in a minute"), std::string::npos);
  EXPECT_NE(refusal("odd\n").find("(odd?)"), std::string::npos);
}

TEST(LinkFailure, SaysWhatToDoWithWhatIsNoHelper) {
  EXPECT_EQ(explain({Kind::notAHelper, "it hung up"}, "mini:1"),
            "What answered at mini:1 is no Torvane P2P Helper (it hung up). Look for its address "
            "with \"torvane-ipad find\" or in its menu.");
  EXPECT_EQ(explain({Kind::misbehaviour, ""}, "mini:1"),
            "The helper at mini:1 broke the rules of the peer link. Update it and this program to "
            "the same version.");
}

TEST(LinkFailure, EndsTheProgramByItsKind) {
  for (const auto kind :
       {Kind::unreachable, Kind::notAHelper, Kind::otherHelper, Kind::strangeHelper, Kind::lost}) {
    EXPECT_EQ(exitFor({kind, ""}), Exit::noConnection);
  }
  for (const auto kind : {Kind::refused, Kind::notApproved, Kind::noAnswer, Kind::misbehaviour}) {
    EXPECT_EQ(exitFor({kind, ""}), Exit::refused);
  }
}

}  // namespace
}  // namespace torvane::ipad
