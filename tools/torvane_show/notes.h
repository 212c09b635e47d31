#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace torvane::show {

// A presenter's notes in the texts that lie beside PDFs: UTF-8, else Latin-1. Notes of page n are
// element n - 1; pages without notes and pages that there are not are left out, and a text in no
// known form has none. Notes are cut after kLongestNotes bytes.
inline constexpr std::size_t kLongestNotes = 100'000;

// A .pdfpc file: its JSON form (pages by "idx", from 0) up to version 2, or its older form of
// sections, in whose section [notes] a line "### N" (from 1) comes before each page's notes.
[[nodiscard]] std::vector<std::string> parsePdfpcNotes(std::string_view text, std::size_t count);

// A .txt file: a line "### N" before each page's notes, or a line "---" after each page's.
[[nodiscard]] std::vector<std::string> parseTextNotes(std::string_view text, std::size_t count);

// Of the PDF at `path`, from the file beside it: same name, ".pdfpc" or else ".txt".
[[nodiscard]] std::vector<std::string> notesBeside(const std::string& path, std::size_t count);

}  // namespace torvane::show
