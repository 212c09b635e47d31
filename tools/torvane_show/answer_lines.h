#pragma once

#include <QString>

namespace torvane::show {

// Answers questions from standard input about a PDF that is not shown, until that ends. Returns the
// process's exit status.
[[nodiscard]] int answerLines(const QString& file, int page);

}  // namespace torvane::show
