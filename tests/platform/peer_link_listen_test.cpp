#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ctime>
#include <thread>

#include "platform/linux/private_file.h"
#include "support/link_host.h"

namespace torvane {
namespace {

using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

TEST(PeerLinkListen, TakesAnotherPortWhenThePreferredOneIsBusy) {
  LinkHost first;
  ASSERT_NE(first.start(), 0);
  PeerLinkOptions options;
  options.preferredPort = first.address.port;
  LinkHost second(std::move(options));
  ASSERT_NE(second.start(), 0);
  EXPECT_NE(second.address.port, first.address.port);
  EXPECT_TRUE(LinkClient(second.clientOptions()).connect());
}

TEST(PeerLinkListen, TakesThePreferredPortAgainAfterARestart) {
  std::uint16_t port = 0;
  {
    LinkHost before;
    port = before.start();
    ASSERT_NE(port, 0);
    ASSERT_TRUE(LinkClient(before.clientOptions()).connect());
  }
  PeerLinkOptions options;
  options.preferredPort = port;
  LinkHost after(std::move(options));
  EXPECT_EQ(after.start(), port);
}

TEST(PeerLinkListen, ListensOnBothAddressFamilies) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  EXPECT_TRUE(LinkClient(host.clientOptions()).connect());
  auto options = host.clientOptions();
  options.host = "::1";
  LinkClient client(options);
  if (!client.connectTcp()) GTEST_SKIP() << "this computer has no IPv6";
  EXPECT_TRUE(client.connectTls());
}

TEST(PeerLinkListen, TwoStartsAtOnceShowOneCertificate) {
  const TemporaryFolder folder;
  PeerLinkOptions options;
  options.dataFolder = folder.path() + "/data";
  LinkHost first(options);
  LinkHost second(options);
  std::thread other([&second] { second.start(); });
  ASSERT_NE(first.start(), 0);
  other.join();
  ASSERT_NE(second.address.port, 0);
  EXPECT_EQ(first.address.certificate, second.address.certificate);
  LinkClient client(second.clientOptions());
  ASSERT_TRUE(client.connectTls());
  EXPECT_EQ(client.certificateHash(), first.address.certificate);
}

TEST(PeerLinkListen, RuntimeFileIsThereWhileItListens) {
  const TemporaryFolder folder;
  PeerLinkOptions options;
  options.runtimeFolder = folder.path() + "/torvane";
  const std::string path = options.runtimeFolder + "/peer-link.json";
  {
    LinkHost host(std::move(options));
    const auto port = host.start();
    ASSERT_NE(port, 0);
    const auto content = readSmallFile(path, 4096);
    ASSERT_TRUE(content);
    EXPECT_NE(content->find("\"port\":" + std::to_string(port) + ","), std::string::npos);
  }
  EXPECT_FALSE(readSmallFile(path, 4096));
}

TEST(PeerLinkListen, NoDescriptorIsInheritedByAnotherProgram) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  DIR* folder = ::opendir("/proc/self/fd");
  ASSERT_NE(folder, nullptr);
  int sockets = 0;
  while (const dirent* entry = ::readdir(folder)) {
    const int descriptor = std::atoi(entry->d_name);
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) continue;
    if (address.ss_family != AF_INET6) continue;  // the server's; the client's is IPv4
    ++sockets;
    EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
  }
  ::closedir(folder);
  EXPECT_GE(sockets, 2);
}

TEST(PeerLinkListen, WaitsCalmlyWhileThereAreNoDescriptors) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  auto options = host.clientOptions();
  LinkClient client(options);
  options.deadline = std::chrono::milliseconds(600);
  LinkClient queued(options);
  ASSERT_TRUE(client.connectTcp() && client.connectTls());  // all that is lazy has been set up
  LinkClient later(host.clientOptions());

  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const int lowest = ::dup(0);
  ::close(lowest);
  const rlimit none{static_cast<rlim_t>(lowest) + 1, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  const bool hasSocket = queued.connectTcp();  // takes the last descriptor; accepting fails
  const auto clockBefore = std::clock();
  const bool isServed = queued.connectTls();
  const double busy = static_cast<double>(std::clock() - clockBefore) / CLOCKS_PER_SEC;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);

  EXPECT_TRUE(hasSocket);
  EXPECT_FALSE(isServed);
  EXPECT_LT(busy, 0.3);  // a spinning loop would have taken all of 0.6 s
  EXPECT_TRUE(later.connectTls());
}

}  // namespace
}  // namespace torvane
