// Unpredictable numbers, behind a port so that tests can repeat them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quillcast::platform {

// Where Message-IDs, Content-IDs and boundaries draw from.
class Entropy {
 public:
  virtual ~Entropy() = default;
  // All 64 bits are chance.
  virtual std::uint64_t Next() = 0;
};

// getrandom(2).
class SystemEntropy final : public Entropy {
 public:
  std::uint64_t Next() override;
};

// Octets from the system for nonces, at the border where they come in.
std::string RandomOctets(std::size_t count);

}  // namespace quillcast::platform
