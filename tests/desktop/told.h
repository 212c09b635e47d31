#pragma once

#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cstdio>
#include <functional>
#include <string>

// Carries out each line of standard input, answers "done" and the line's first word, and ends the
// program where the input ends.
class Told {
 public:
  explicit Told(std::function<void(const std::string&)> obey) : obey_(std::move(obey)) {
    QObject::connect(&input_, &QSocketNotifier::activated, &input_, [this] { take(); });
  }

  static void say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
  }

 private:
  void take() {
    char bytes[4096];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) return QCoreApplication::quit();
    waiting_.append(bytes, static_cast<std::size_t>(count));
    for (auto end = waiting_.find('\n'); end != std::string::npos; end = waiting_.find('\n')) {
      const std::string line = waiting_.substr(0, end);
      waiting_.erase(0, end + 1);
      obey_(line);
      say("done " + line.substr(0, line.find(' ')));
    }
  }

  std::function<void(const std::string&)> obey_;
  QSocketNotifier input_{STDIN_FILENO, QSocketNotifier::Read};
  std::string waiting_;
};
