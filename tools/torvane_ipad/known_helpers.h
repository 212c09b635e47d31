#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvane::ipad {

struct KnownHelper {
  std::string address;      // host:port, as it was reached
  std::string name;         // as it called itself
  std::string fingerprint;  // 64 lower-case hexadecimal digits: SHA-256 of its certificate
};

// The helpers that accepted this device, the latest first.
class KnownHelpers {
 public:
  // None when the text is not what serialized() gives.
  [[nodiscard]] static std::optional<KnownHelpers> parse(std::string_view text);
  [[nodiscard]] std::string serialized() const;

  // The one that was reached there last.
  [[nodiscard]] const KnownHelper* find(std::string_view address) const;
  [[nodiscard]] const KnownHelper* withFingerprint(std::string_view fingerprint) const;
  [[nodiscard]] const KnownHelper* latest() const;
  [[nodiscard]] std::vector<std::string> fingerprints() const;

  // It is the same computer where the fingerprint is the same, whatever its address is now.
  void remember(KnownHelper helper);
  bool forget(std::string_view address);

 private:
  std::vector<KnownHelper> helpers_;
};

// 64 lower-case hexadecimal digits.
[[nodiscard]] bool isFingerprint(std::string_view text);

[[nodiscard]] std::filesystem::path knownHelpersFile();

// An absent file is an empty list; none when it is damaged, so that trust is not lost unnoticed.
[[nodiscard]] std::optional<KnownHelpers> loadKnownHelpers(const std::filesystem::path& file);

}  // namespace torvane::ipad
