#pragma once

#include <QObject>
#include <vector>

#include "torvane_show/deck.h"
#include "torvane_show/pdf_worker.h"
#include "torvane_show/show_socket.h"
#include "torvane_show/show_window.h"

namespace torvane::show {

// Answers the engine's questions about a show that runs, and does what they ask for. An action is
// answered when it was painted, or after a moment without that.
class Talk : public QObject {
  Q_OBJECT

 public:
  Talk(const Deck& deck, PdfWorker& worker, ShowWindow& window);

  void answer(const Question& question, const ShowSocket::Reply& reply);

 private:
  struct Waiting {
    std::int64_t id;
    ShowSocket::Reply reply;
  };

  void go(const Question& question, const Position& to, const ShowSocket::Reply& reply);
  void answerWaiting();
  void sendPicture(const Question& question, const ShowSocket::Reply& reply);

  const Deck& deck_;
  PdfWorker& worker_;
  ShowWindow& window_;
  std::vector<Waiting> waiting_;
};

}  // namespace torvane::show
