#pragma once

#include <string>

namespace torvane {

// The system's own check of who signed an application, without a tool in between.
class CodeCheck {
 public:
  virtual ~CodeCheck() = default;

  // Whether the application at this path is intact, with all that it holds and for every processor,
  // and meets a requirement, a text in the language of the system's code signing. False also where
  // that cannot be found out. Any thread; blocks while all of it is read.
  [[nodiscard]] virtual bool meets(const std::string& path,
                                   const std::string& requirement) const = 0;
};

}  // namespace torvane
