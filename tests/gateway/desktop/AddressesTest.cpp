#include "gateway/desktop/Addresses.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <string>

namespace gateway {
namespace {

struct Address {
  explicit Address(const std::string& text) {
    if (::inet_pton(AF_INET, text.c_str(), &four.sin_addr) == 1) {
      four.sin_family = AF_INET;
      any = reinterpret_cast<const sockaddr*>(&four);
    } else if (::inet_pton(AF_INET6, text.c_str(), &six.sin6_addr) == 1) {
      six.sin6_family = AF_INET6;
      any = reinterpret_cast<const sockaddr*>(&six);
    }
  }
  sockaddr_in four{};
  sockaddr_in6 six{};
  const sockaddr* any = nullptr;
};

TEST(AddressesTest, OnlyThoseOfTheInternetArePublic) {
  for (const char* text :
       {"1.1.1.1", "9.255.255.255", "11.0.0.0", "100.63.255.255", "100.128.0.0", "126.255.255.255",
        "128.0.0.1", "169.253.255.255", "172.15.255.255", "172.32.0.0", "192.167.255.255", "192.169.0.0",
        "198.17.255.255", "198.20.0.0", "223.255.255.255", "2001:200::1", "2a00:1450::1", "3fff:1000::1",
        "64:ff9b::1.1.1.1"}) {
    const Address address(text);
    ASSERT_NE(address.any, nullptr) << text;
    EXPECT_TRUE(isPublic(*address.any)) << text;
  }
  for (const char* text : {"0.0.0.0",
                           "0.1.2.3",
                           "10.0.0.1",
                           "100.64.0.0",
                           "100.127.255.255",
                           "127.0.0.1",
                           "127.255.255.255",
                           "169.254.169.254",
                           "172.16.0.0",
                           "172.31.255.255",
                           "192.0.0.8",
                           "192.0.2.1",
                           "192.88.99.1",
                           "192.168.1.1",
                           "198.18.0.0",
                           "198.19.255.255",
                           "198.51.100.1",
                           "203.0.113.1",
                           "224.0.0.1",
                           "239.255.255.255",
                           "240.0.0.1",
                           "255.255.255.255",
                           "::",
                           "::1",
                           "::1.1.1.1",
                           "::ffff:1.1.1.1",
                           "::ffff:127.0.0.1",
                           "64:ff9b::10.0.0.1",
                           "64:ff9b::127.0.0.1",
                           "64:ff9b:1::1.1.1.1",
                           "100::1",
                           "2001::1",
                           "2001:1ff::1",
                           "2001:db8::1",
                           "2002:101:101::1",
                           "3fff::1",
                           "4000::1",
                           "fc00::1",
                           "fdff::1",
                           "fe80::1",
                           "fec0::1",
                           "ff02::1"}) {
    const Address address(text);
    ASSERT_NE(address.any, nullptr) << text;
    EXPECT_FALSE(isPublic(*address.any)) << text;
    const std::string loopback(text);
    EXPECT_EQ(isLoopback(*address.any), loopback.starts_with("127.") || loopback == "::1") << text;
  }
  const sockaddr local{AF_UNIX, {}};
  EXPECT_FALSE(isPublic(local) || isLoopback(local));
}

}  // namespace
}  // namespace gateway
