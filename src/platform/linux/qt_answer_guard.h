#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include "app/answer_guard.h"

namespace torvane {

// Stands before an alert's window and holds back the input that an AnswerGuard does not take, and
// with it the wish of the window manager to close the window. Dies before the alert.
class QtAnswerGuard final : public QObject {
 public:
  explicit QtAnswerGuard(QDialog& alert);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  [[nodiscard]] double now() const { return static_cast<double>(clock_.elapsed()) / 1000; }
  [[nodiscard]] bool holdsBackClosing(QEvent& event) const;
  void look();

  AnswerGuard guard_;
  QElapsedTimer clock_;
  QTimer looks_;
  bool isShown_ = false;
};

}  // namespace torvane
