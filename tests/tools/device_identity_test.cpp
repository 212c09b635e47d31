#include "torvane_ipad/device_identity.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "protocol/device_key.h"
#include "support/temporary_folder.h"

namespace torvane::ipad {
namespace {

DeviceIdentity::Seed seedOf(std::uint8_t byte) {
  DeviceIdentity::Seed seed{};
  seed.fill(byte);
  return seed;
}

mode_t modeOf(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

Bytes publicKeyOf(const std::variant<DeviceIdentity, std::string>& loaded) {
  const auto* identity = std::get_if<DeviceIdentity>(&loaded);
  if (identity == nullptr) return {};
  return {identity->publicKey().begin(), identity->publicKey().end()};
}

TEST(DeviceIdentity, SignsWhatItsPublicKeyVerifies) {
  const DeviceIdentity identity(seedOf(7));
  const auto key = SigningPublicKey::fromRaw(identity.publicKey());
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->isValidSignature(identity.sign(asBytes("message")), asBytes("message")));
  EXPECT_FALSE(key->isValidSignature(identity.sign(asBytes("message")), asBytes("massage")));
}

TEST(DeviceIdentity, DerivesTheSameDeviceForTheSameNumberOnly) {
  const DeviceIdentity identity(seedOf(7));
  const auto text = [](const DeviceIdentity& device) {
    return std::string(asText(device.publicKey()));
  };
  EXPECT_EQ(text(identity.derived(1)), text(identity.derived(1)));
  EXPECT_NE(text(identity.derived(1)), text(identity.derived(2)));
  EXPECT_NE(text(identity.derived(1)), text(identity));
  EXPECT_NE(text(identity.derived(1)), text(DeviceIdentity(seedOf(8)).derived(1)));
}

TEST(DeviceIdentity, MakesItsKeyFileOnceForTheUserAlone) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder / "torvane-ipad/key";
  const auto first = publicKeyOf(loadIdentity(file));
  EXPECT_EQ(first.size(), 32U);
  EXPECT_EQ(modeOf(file), 0600U);
  EXPECT_EQ(modeOf(file.parent_path()), 0700U);
  EXPECT_EQ(publicKeyOf(loadIdentity(file)), first);
  const std::filesystem::directory_iterator files(file.parent_path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "nothing is left beside the key";
}

TEST(DeviceIdentity, RefusesAKeyFileThatOthersMayRead) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder / "key";
  ASSERT_FALSE(publicKeyOf(loadIdentity(file)).empty());
  ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
  const auto loaded = loadIdentity(file);
  const auto* problem = std::get_if<std::string>(&loaded);
  ASSERT_NE(problem, nullptr);
  EXPECT_NE(problem->find("chmod 600"), problem->npos);
}

TEST(DeviceIdentity, RefusesAFileThatHoldsNoKeyAndLeavesItAlone) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder / "key";
  std::ofstream(file) << "AAAA\n";
  ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
  EXPECT_TRUE(std::holds_alternative<std::string>(loadIdentity(file)));
  EXPECT_EQ(std::filesystem::file_size(file), 5U);
}

TEST(DeviceIdentity, SaysWhenTheKeyCannotBeMade) {
  EXPECT_TRUE(std::holds_alternative<std::string>(loadIdentity("/proc/none/key")));
}

}  // namespace
}  // namespace torvane::ipad
