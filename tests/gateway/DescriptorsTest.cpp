#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <chrono>

#include "VorselKelpPosix/Descriptor.h"
#include "gateway/ServedTest.h"

namespace gateway {
namespace {

using DescriptorsTest = ServedTest;

/// While it lives the process opens no files of this number and beyond.
class OpenFilesBelow {
 public:
  explicit OpenFilesBelow(int number) {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    auto limit = before_;
    limit.rlim_cur = static_cast<rlim_t>(number);
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~OpenFilesBelow() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  OpenFilesBelow(const OpenFilesBelow&) = delete;
  OpenFilesBelow& operator=(const OpenFilesBelow&) = delete;

 private:
  rlimit before_{};
};

TEST_F(DescriptorsTest, WhoeverWaitsForOneIsTakenAsSoonAsOneIsFree) {
  using Clock = std::chrono::steady_clock;
  start();
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(served->port());
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto waited = Clock::duration::zero();
  for (int round = 0; round < 20; ++round) {
    auto there = std::make_unique<Client>(served->port());
    const VorselKelp::posix::Descriptor waiting(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const OpenFilesBelow none(waiting.number() + 1);
    ASSERT_EQ(::connect(waiting.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(there->wait(there->post(path, fields, payload)).status, 200) << "and has found none meanwhile";
    const auto begin = Clock::now();
    there = nullptr;
    EXPECT_EQ(::send(waiting.number(), "no TLS", 6, MSG_NOSIGNAL), 6);
    char answer[64];
    while (::recv(waiting.number(), answer, sizeof answer, 0) > 0) {
    }
    waited += Clock::now() - begin;
  }
  EXPECT_LT(waited, std::chrono::seconds(10)) << "it would look each second by itself";
}

}  // namespace
}  // namespace gateway
