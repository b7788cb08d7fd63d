// Unpredictable numbers, behind a port so that tests can repeat them.
#pragma once

#include <cstdint>

namespace quillcast::platform {

class Entropy {
 public:
  virtual ~Entropy() = default;
  virtual std::uint64_t Next() = 0;
};

// getrandom(2).
class SystemEntropy final : public Entropy {
 public:
  std::uint64_t Next() override;
};

}  // namespace quillcast::platform
