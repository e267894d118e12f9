#include "gateway/desktop/Addresses.h"

#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace gateway {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// The addresses that begin with these bits.
struct Block {
  std::array<std::uint8_t, 6> begin;
  std::size_t bits;
};

constexpr std::array<Block, 14> apart4{{
    {{0}, 8},              // this network
    {{10}, 8},             // private
    {{100, 64}, 10},       // behind a carrier's translation
    {{127}, 8},            // loopback
    {{169, 254}, 16},      // link-local, with what clouds tell of a machine
    {{172, 16}, 12},       // private
    {{192, 0, 0}, 24},     // protocols' own
    {{192, 0, 2}, 24},     // documents
    {{192, 88, 99}, 24},   // tunnels' relays
    {{192, 168}, 16},      // private
    {{198, 18}, 15},       // measurements
    {{198, 51, 100}, 24},  // documents
    {{203, 0, 113}, 24},   // documents
    {{224}, 3},            // groups, and what is kept for later
}};

/// Whatever lies beyond is no address of a server's: loopback, private, link-local, groups.
constexpr Block global6{{0x20}, 3};
constexpr std::array<Block, 4> apart6{{
    {{0x20, 0x01}, 23},              // protocols' own, tunnels among them
    {{0x20, 0x01, 0x0d, 0xb8}, 32},  // documents
    {{0x20, 0x02}, 16},              // tunnels
    {{0x3f, 0xff}, 20},              // documents
}};

/// An address of IPv4 that a network without it translates; it stands in the last four bytes.
constexpr std::array<std::uint8_t, 12> translated{0x00, 0x64, 0xff, 0x9b};

bool isIn(Bytes address, const Block& block) {
  for (std::size_t bit = 0; bit < block.bits; ++bit) {
    const auto mask = static_cast<std::uint8_t>(0x80U >> bit % 8);
    if ((address[bit / 8] & mask) != (block.begin[bit / 8] & mask)) return false;
  }
  return true;
}

template <std::size_t size>
bool isInOneOf(Bytes address, const std::array<Block, size>& blocks) {
  return std::ranges::any_of(blocks, [&](const Block& block) { return isIn(address, block); });
}

bool isPublic4(Bytes address) {
  return !isInOneOf(address, apart4);
}

bool isPublic6(Bytes address) {
  if (std::ranges::equal(address.first(translated.size()), translated))
    return isPublic4(address.last(sizeof(in_addr)));
  return isIn(address, global6) && !isInOneOf(address, apart6);
}

std::array<std::uint8_t, sizeof(in_addr)> bytes4(const sockaddr& address) {
  sockaddr_in whole{};
  std::memcpy(&whole, &address, sizeof whole);
  std::array<std::uint8_t, sizeof(in_addr)> bytes{};
  std::memcpy(bytes.data(), &whole.sin_addr, bytes.size());
  return bytes;
}

std::array<std::uint8_t, sizeof(in6_addr)> bytes6(const sockaddr& address) {
  sockaddr_in6 whole{};
  std::memcpy(&whole, &address, sizeof whole);
  std::array<std::uint8_t, sizeof(in6_addr)> bytes{};
  std::memcpy(bytes.data(), &whole.sin6_addr, bytes.size());
  return bytes;
}

}  // namespace

bool isPublic(const sockaddr& address) {
  if (address.sa_family == AF_INET) return isPublic4(bytes4(address));
  return address.sa_family == AF_INET6 && isPublic6(bytes6(address));
}

bool isLoopback(const sockaddr& address) {
  if (address.sa_family == AF_INET) return isIn(bytes4(address), {{127}, 8});
  constexpr std::array<std::uint8_t, sizeof(in6_addr)> loopback6{0, 0, 0, 0, 0, 0, 0, 0,
                                                                 0, 0, 0, 0, 0, 0, 0, 1};
  return address.sa_family == AF_INET6 && bytes6(address) == loopback6;
}

}  // namespace gateway
