#include "platform/linux/peer_link_certificate.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <set>
#include <thread>
#include <vector>

#include "platform/linux/peer_link_runtime_file.h"
#include "platform/linux/private_file.h"
#include "protocol/json.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

unsigned modeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

void write(const std::string& path, const std::string& content) {
  std::ofstream(path) << content;
}

TEST(PeerLinkCertificate, IsMadeOnceAndKept) {
  const TemporaryFolder folder;
  const std::string data = folder.path() + "/deep/torvane";
  const auto first = keptCertificate(data);
  const auto second = keptCertificate(data);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->hash, second->hash);
  EXPECT_EQ(first->pem, second->pem);
  EXPECT_EQ(modeOf(data), 0700U);
  EXPECT_EQ(modeOf(data + "/peer-link.pem"), 0600U);
}

TEST(PeerLinkCertificate, DiffersFromOneComputerToAnother) {
  const TemporaryFolder one;
  const TemporaryFolder other;
  EXPECT_NE(keptCertificate(one.path())->hash, keptCertificate(other.path())->hash);
}

TEST(PeerLinkCertificate, ReplacesABrokenFileAndKeepsIt) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/peer-link.pem";
  for (const std::string& broken :
       {std::string("not a certificate"), std::string(),
        keptCertificate(TemporaryFolder().path())->pem.substr(0, 300), std::string(100'000, 'x')}) {
    write(path, broken);
    const auto made = keptCertificate(folder.path());
    ASSERT_TRUE(made);
    EXPECT_EQ(readSmallFile(path + ".broken", 200'000), broken);
    EXPECT_EQ(keptCertificate(folder.path())->hash, made->hash);
  }
}

TEST(PeerLinkCertificate, RefusesAKeyThatBelongsToAnotherCertificate) {
  const TemporaryFolder one;
  const TemporaryFolder other;
  const std::string pem = keptCertificate(one.path())->pem;
  const std::string foreign = keptCertificate(other.path())->pem;
  const auto cut = [](const std::string& text) { return text.find("-----BEGIN CERTIFICATE"); };
  EXPECT_TRUE(readCertificate(pem.substr(0, cut(pem)) + pem.substr(cut(pem))));
  EXPECT_FALSE(readCertificate(pem.substr(0, cut(pem)) + foreign.substr(cut(foreign))));
}

TEST(PeerLinkCertificate, TightensTheModeOfItsFile) {
  const TemporaryFolder folder;
  ASSERT_TRUE(keptCertificate(folder.path()));
  const std::string path = folder.path() + "/peer-link.pem";
  ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
  ASSERT_TRUE(keptCertificate(folder.path()));
  EXPECT_EQ(modeOf(path), 0600U);
}

TEST(PeerLinkCertificate, StartsAtTheSameTimeAgreeOnOne) {
  const TemporaryFolder folder;
  std::vector<CertificateHash> hashes(8);
  std::vector<std::thread> starts;
  for (auto& hash : hashes) {
    starts.emplace_back([&folder, &hash] { hash = keptCertificate(folder.path())->hash; });
  }
  for (auto& start : starts) start.join();
  EXPECT_EQ(std::set<CertificateHash>(hashes.begin(), hashes.end()).size(), 1U);
}

TEST(PeerLinkCertificate, LastsForTheRunWhereNothingCanBeWritten) {
  const auto made = keptCertificate("/proc/no such folder/torvane");
  ASSERT_TRUE(made);
  EXPECT_EQ(fingerprintText(made->hash).size(), 64U);
}

TEST(PeerLinkRuntimeFile, SaysWhereTheLinkListensWhileItLives) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/run/torvane/peer-link.json";
  {
    const PeerLinkRuntimeFile file(folder.path() + "/run/torvane", {4711, {0xAB, 1}, "Desk"});
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(folder.path() + "/run/torvane"), 0700U);
    const auto object = parseJsonObject(readSmallFile(path, 4096).value_or(""));
    ASSERT_TRUE(object);
    EXPECT_EQ(integerMember(*object, "port"), 4711);
    EXPECT_EQ(stringMember(*object, "fingerprint"), "ab01" + std::string(60, '0'));
    EXPECT_EQ(stringMember(*object, "name"), "Desk");
    EXPECT_EQ(integerMember(*object, "pid"), ::getpid());
  }
  EXPECT_FALSE(readSmallFile(path, 4096));
}

TEST(PeerLinkRuntimeFile, LeavesTheFileOfALaterProgram) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/peer-link.json";
  {
    const PeerLinkRuntimeFile file(folder.path(), {4711, {}, "Desk"});
    write(path, "{\"port\":1}");
  }
  EXPECT_EQ(readSmallFile(path, 4096), "{\"port\":1}");
}

TEST(PeerLinkRuntimeFile, IsNotWrittenWithoutAFolder) {
  const PeerLinkRuntimeFile file("", {4711, {}, "Desk"});
  EXPECT_FALSE(readSmallFile("/peer-link.json", 4096));
}

}  // namespace
}  // namespace torvane
