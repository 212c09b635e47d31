#include "torvane_show/talk.h"

#include <QTimer>

#include "torvane_show/answers.h"

namespace torvane::show {
namespace {

constexpr int kPatience = 250;  // milliseconds that an action is waited for

}  // namespace

Talk::Talk(const Deck& deck, PdfWorker& worker, ShowWindow& window)
    : deck_(deck), worker_(worker), window_(window) {
  connect(&window, &ShowWindow::positionPainted, this, [this] {
    if (window_.painted() == window_.wanted()) answerWaiting();
  });
}

void Talk::answer(const Question& question, const ShowSocket::Reply& reply) {
  using Kind = Question::Kind;
  const bool hasPage = question.page >= 1 && question.page <= deck_.count();
  switch (question.kind) {
    case Kind::kLook:
      return reply(lookAnswer(question.id, deck_, window_.painted().value_or(window_.wanted()),
                              window_.painted().has_value()));
    case Kind::kNext:
      return go(question, next(window_.wanted(), deck_.count()), reply);
    case Kind::kPrevious:
      return go(question, previous(window_.wanted()), reply);
    case Kind::kBlank:
      return go(question, blanked(window_.wanted(), question.on), reply);
    case Kind::kEnd:
      reply(doneAnswer(question.id));
      window_.close();
      return;
    default:
      break;
  }
  if (!hasPage) return reply(refusal(question.id, kNoSuchPage));
  if (question.kind == Kind::kGoTo) return go(question, Position{question.page}, reply);
  if (question.kind == Kind::kPicture) return sendPicture(question, reply);
  reply(pageAnswer(question.id, deck_.pages[static_cast<std::size_t>(question.page - 1)]));
}

void Talk::go(const Question& question, const Position& to, const ShowSocket::Reply& reply) {
  window_.go(to);
  if (window_.painted() == to) return reply(doneAnswer(question.id));
  waiting_.push_back({question.id, reply});
  if (waiting_.size() == 1) QTimer::singleShot(kPatience, this, &Talk::answerWaiting);
}

void Talk::answerWaiting() {
  for (const Waiting& one : std::exchange(waiting_, {})) one.reply(doneAnswer(one.id));
}

void Talk::sendPicture(const Question& question, const ShowSocket::Reply& reply) {
  const auto id = question.id;
  worker_.picture(question.page, question.width, [this, id, reply](const QByteArray& file) {
    const auto line =
        file.isEmpty() ? refusal(id, kNoPicture) : pictureAnswer(id, file.toBase64().toStdString());
    QMetaObject::invokeMethod(
        this, [reply, line] { reply(line); }, Qt::QueuedConnection);
  });
}

}  // namespace torvane::show
