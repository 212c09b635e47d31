#include "torvane_show/answer_lines.h"

#include <cstdio>
#include <iostream>
#include <string>

#include "torvane_show/answers.h"
#include "torvane_show/pdf_pages.h"
#include "torvane_show/question.h"

namespace torvane::show {
namespace {

constexpr int kTallest = 16384;  // pixels

std::string answered(const Question& question, const Deck& deck, PdfPages& pages, int page) {
  using Kind = Question::Kind;
  if (question.kind == Kind::kLook) return lookAnswer(question.id, deck, Position{page}, false);
  if (question.kind != Kind::kPage && question.kind != Kind::kPicture)
    return refusal(question.id, kNoShow);
  if (question.page < 1 || question.page > deck.count()) return refusal(question.id, kNoSuchPage);
  if (question.kind == Kind::kPage)
    return pageAnswer(question.id, deck.pages[static_cast<std::size_t>(question.page - 1)]);
  const auto picture = pictureFile(pages.image(question.page, {question.width, kTallest}));
  if (picture.isEmpty()) return refusal(question.id, kNoPicture);
  return pictureAnswer(question.id, picture.toBase64().toStdString());
}

}  // namespace

int answerLines(const QString& file, int page) {
  PdfPages pages;
  const QString problem = pages.open(file);
  if (!problem.isEmpty()) {
    std::fprintf(stderr, "torvane-show: %s\n", qUtf8Printable(problem));
    return 1;
  }
  const Deck deck = pages.deck();
  page = std::min(page, deck.count());
  std::string line;
  while (std::getline(std::cin, line)) {
    const auto question = parseQuestion(line);
    if (!question) return 2;
    std::cout << answered(*question, deck, pages, page) << std::flush;
  }
  return 0;
}

}  // namespace torvane::show
