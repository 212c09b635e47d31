#include "torvane_show/notes.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace torvane::show {
namespace {

using Texts = std::vector<std::string>;

TEST(PdfpcNotes, JsonCountsPagesFromZero) {
  EXPECT_EQ(parsePdfpcNotes(R"({"pdfpcFormat":2,"noteFontSize":20,"pages":[
                {"idx":0,"label":"1","overlay":0,"note":"Welcome\n"},
                {"idx":2,"label":"2","overlay":1,"note":"Größe"}]})",
                            3),
            (Texts{"Welcome", "", "Größe"}));
}

TEST(PdfpcNotes, JsonOfANewerFormatHasNone) {
  EXPECT_EQ(parsePdfpcNotes(R"({"pdfpcFormat":3,"pages":[{"idx":0,"note":"x"}]})", 1), Texts{""});
  EXPECT_EQ(parsePdfpcNotes(R"({"pages":[{"idx":0,"note":"x"}]})", 1), Texts{"x"});
}

TEST(PdfpcNotes, SectionsCountPagesFromOne) {
  EXPECT_EQ(parsePdfpcNotes("[file]\r\ntalk.pdf\r\n[font_size]\r\n20\r\n[notes]\r\n### 1\r\n"
                            "First\r\nline\r\n### 3\r\nThird\r\n[end_slide]\r\n### 2\r\nno\r\n",
                            3),
            (Texts{"First\nline", "", "Third"}));
}

TEST(PdfpcNotes, WithoutTheirSectionThereAreNone) {
  EXPECT_EQ(parsePdfpcNotes("### 1\nnot here\n", 1), Texts{""});
}

TEST(PdfpcNotes, HostileFilesAreHarmless) {
  for (
      const auto* text :
      {"{", "{}", R"({"pages":3})", R"({"pages":[3,null,{"idx":-1,"note":"x"},{"idx":"0"}]})",
       R"({"pages":[{"idx":9223372036854775807,"note":"x"},{"idx":99,"note":"x"},{"idx":0,"note":7}]})",
       "[notes]\n### 0\nx\n### -1\nx\n### 99999999999999999999999\nx\n### 7\nx", "\xff\xfe"})
    EXPECT_EQ(parsePdfpcNotes(text, 2), (Texts{"", ""})) << text;
  EXPECT_EQ(parsePdfpcNotes(R"({"pages":)" + std::string(100'000, '['), 1), Texts{""});
}

TEST(PdfpcNotes, ADeckWithoutPagesHasNone) {
  EXPECT_EQ(parsePdfpcNotes(R"({"pages":[{"idx":0,"note":"x"}]})", 0), Texts{});
}

TEST(TextNotes, AreSeparatedByDashes) {
  EXPECT_EQ(parseTextNotes("\xEF\xBB\xBF"
                           "One\nmore\n\n---\n---  \n Three -- 3\n",
                           4),
            (Texts{"One\nmore", "", "Three -- 3", ""}));
}

TEST(TextNotes, OrBeginWithThePagesNumber) {
  EXPECT_EQ(parseTextNotes("Title\n### 2\nTwo\n---\nstill two\n### 1\nOne", 2),
            (Texts{"One", "Two\n---\nstill two"}));
}

TEST(TextNotes, BeyondTheLastPageAreLeftOut) {
  EXPECT_EQ(parseTextNotes("1\n---\n2\n---\n3", 2), (Texts{"1", "2"}));
}

TEST(TextNotes, ThatAreNotUtf8AreTakenForLatin1) {
  EXPECT_EQ(parseTextNotes("Gr\xF6\xDF"
                           "e",
                           1),
            Texts{"Größe"});
}

TEST(TextNotes, AreCutBetweenCharacters) {
  std::string text(kLongestNotes - 1, 'x');
  EXPECT_EQ(parseTextNotes(text + "ö and more", 1), Texts{text});
}

class NotesBeside : public testing::Test {
 protected:
  NotesBeside() {
    std::string pattern = std::filesystem::temp_directory_path() / "notes-XXXXXX";
    folder_ = ::mkdtemp(pattern.data());
  }
  ~NotesBeside() override { std::filesystem::remove_all(folder_); }

  void write(const char* name, const std::string& text) { std::ofstream(folder_ / name) << text; }
  [[nodiscard]] Texts read() const { return notesBeside((folder_ / "my.talk.pdf").string(), 1); }

  std::filesystem::path folder_;
};

TEST_F(NotesBeside, ThePdfpcFileComesBeforeTheText) {
  EXPECT_EQ(read(), Texts{""});
  write("my.talk.txt", "plain");
  EXPECT_EQ(read(), Texts{"plain"});
  write("my.talk.pdfpc", "[notes]\n### 1\nproper");
  EXPECT_EQ(read(), Texts{"proper"});
}

TEST_F(NotesBeside, OnlyFilesOfASensibleSizeAreRead) {
  write("my.talk.txt", "plain");
  ASSERT_EQ(::mkfifo((folder_ / "my.talk.pdfpc").c_str(), 0600), 0);  // which nobody ever writes
  EXPECT_EQ(read(), Texts{"plain"});
  write("my.talk.txt", std::string(5 * 1024 * 1024, 'x'));
  EXPECT_EQ(read(), Texts{""});
}

}  // namespace
}  // namespace torvane::show
