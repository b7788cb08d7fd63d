#include "domain/sender/seen_server.h"

#include <algorithm>
#include <array>

namespace quillcast::domain {
namespace {

constexpr std::size_t kMostAddresses = 10;

struct Network {
  const char* address;
  int bits;
};
// Addresses that nobody sees from outside (RFC 1918, 6598, 3927, 4193, 4291).
constexpr std::array kPrivate = {Network{"0.0.0.0", 8},      Network{"10.0.0.0", 8},     Network{"100.64.0.0", 10},
                                 Network{"127.0.0.0", 8},    Network{"169.254.0.0", 16}, Network{"172.16.0.0", 12},
                                 Network{"192.168.0.0", 16}, Network{"::", 128},         Network{"fc00::", 7},
                                 Network{"fe80::", 10}};

bool IsPublic(const net::IpAddress& address) {
  return !net::IsLoopback(address) && std::none_of(kPrivate.begin(), kPrivate.end(), [&](const Network& network) {
    return net::InNetwork(address, *net::ParseIpAddress(network.address), network.bits);
  });
}

void Add(const net::IpAddress& address, SeenServer& server) {
  const net::IpAddress plain = net::Unmapped(address);
  if (IsPublic(plain) && server.addresses.size() < kMostAddresses) server.addresses.push_back(plain);
}

}  // namespace

std::optional<SeenServer> LookAtServer(const std::string& name, Answers& answers) {
  SeenServer server{.name = name};
  if (const std::optional<net::IpAddress> literal = net::ParseIpAddress(name)) {
    Add(*literal, server);
    return server;
  }
  const NameAddresses found = answers.AddressesOf(name);
  if (found.known == Known::kNotYet) return std::nullopt;
  for (const net::IpAddress& address : found.addresses) Add(address, server);
  return server;
}

}  // namespace quillcast::domain
