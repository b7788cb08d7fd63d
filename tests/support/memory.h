// How much memory this process has had at most.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

namespace quillcast::test {

// The peak counts from here.
inline void ForgetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }

// In bytes.
inline std::uint64_t PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    std::uint64_t kilobytes = 0;
    if (word == "VmHWM:" && status >> kilobytes) return kilobytes * 1024;
  }
  return ~std::uint64_t{0};
}

}  // namespace quillcast::test
