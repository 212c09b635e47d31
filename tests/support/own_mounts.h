#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <string>
#include <vector>

namespace torvane {

// Mounts that only this thread sees, and those that it starts from then on. They end with the
// object. Only the superuser can have them.
class OwnMounts {
 public:
  OwnMounts() {
    isAllowed_ = ::unshare(CLONE_NEWNS) == 0 &&
                 ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  }
  ~OwnMounts() {
    for (const std::string& path : mounted_) ::umount2(path.c_str(), MNT_DETACH);
  }
  OwnMounts(const OwnMounts&) = delete;
  OwnMounts& operator=(const OwnMounts&) = delete;

  // An empty disk of this many bytes in a folder's place; false where that may not be.
  [[nodiscard]] bool putDisk(const std::string& folder, std::size_t size) {
    const std::string options = "size=" + std::to_string(size);
    return note(folder,
                isAllowed_ && ::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0);
  }
  // One file in another's place.
  [[nodiscard]] bool putFile(const std::string& file, const std::string& inPlaceOf) {
    return note(inPlaceOf, isAllowed_ && ::mount(file.c_str(), inPlaceOf.c_str(), nullptr, MS_BIND,
                                                 nullptr) == 0);
  }

 private:
  bool note(const std::string& path, bool isMounted) {
    if (isMounted) mounted_.push_back(path);
    return isMounted;
  }

  bool isAllowed_ = false;
  std::vector<std::string> mounted_;
};

}  // namespace torvane
