#pragma once

#include <string>

namespace torvane {

// What the desktop does with files and addresses for its programs. Main thread only.
class Workspace {
 public:
  virtual ~Workspace() = default;

  // Opens an address with the program that the user has for it. Returns at once; nothing happens
  // when the text is no URL or there is no such program.
  virtual void openURL(const std::string& url) = 0;

  // Moves a file or folder, by absolute path, to the user's trash; false when it stayed.
  virtual bool moveToTrash(const std::string& path) = 0;
};

}  // namespace torvane
