// The name of a Windows version, from the record in which the system describes itself.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillcast::profile {

// As the system's own call fills it in. `platform`: 0 for what runs on DOS, 1 for the line of 95, 2 for NT.
struct VersionRecord {
  std::uint32_t platform = 0;
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t product_type = 0;  // 1 is a workstation
};

// One of the fixed names; empty for versions between the known ones.
std::string_view GetWinVer(const VersionRecord& version);

}  // namespace quillcast::profile
