#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace torvane::ipad {

// $XDG_DATA_HOME/torvane-ipad, by default ~/.local/share/torvane-ipad.
[[nodiscard]] std::filesystem::path dataFolder();

// None when the file cannot be read, is no regular file, or is larger than `most` bytes.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file,
                                                  std::size_t most);

// Everything up to the end; none when it is more than `most` bytes.
[[nodiscard]] std::optional<std::string> readStandardInput(std::size_t most);

// Writes aside with mode 0600 and renames, so that readers see the old text or the new one. A
// missing folder is made, for the user alone.
[[nodiscard]] bool replacePrivateFile(const std::filesystem::path& file, std::string_view text);

// The same, but leaves a file that exists already alone and says so with false.
[[nodiscard]] bool createPrivateFile(const std::filesystem::path& file, std::string_view text);

// Whether anyone but the owner may read or write the file.
[[nodiscard]] bool isOpenToOthers(const std::filesystem::path& file);

}  // namespace torvane::ipad
