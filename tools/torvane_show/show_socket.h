#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <functional>
#include <string>

#include "torvane_show/line_buffer.h"
#include "torvane_show/question.h"

namespace torvane::show {

// The socket on which the engine asks: in a folder of the user's own, and for programs of the same
// user only. Where it cannot be made, the show does without.
class ShowSocket : public QObject {
  Q_OBJECT

 public:
  // Called for each question; `reply` may be called later, or when who asked has gone.
  using Reply = std::function<void(const std::string& line)>;
  using Answer = std::function<void(const Question& question, const Reply& reply)>;

  explicit ShowSocket(Answer answer);

  // Whether programs can ask now.
  [[nodiscard]] bool listen();

  // Nobody finds it any more; who is connected stays so.
  void close() { server_.close(); }

 private:
  void welcome();
  void read(QLocalSocket* client, LineBuffer& lines);

  Answer answer_;
  QLocalServer server_;
};

}  // namespace torvane::show
