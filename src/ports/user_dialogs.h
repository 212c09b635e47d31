#pragma once

#include <string>

#include "ports/alert.h"

namespace torvane {

// How the parts of the program speak to the user. Neither call brings the program to the front
// (application.h), and both keep off the projector where they can. Main thread only; other work
// goes on meanwhile, as Alerts says.
class UserDialogs {
 public:
  // The code of the button that was chosen.
  virtual int runAlert(AlertContent content) = 0;

  // Under the program's name and with one button.
  virtual void alert(const std::string& text) = 0;

 protected:
  ~UserDialogs() = default;
};

}  // namespace torvane
