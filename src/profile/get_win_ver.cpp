#include "profile/get_win_ver.h"

#include <array>
#include <optional>

namespace quillcast::profile {
namespace {

constexpr std::uint32_t kWorkstation = 1;

struct Row {
  std::uint32_t platform;
  std::optional<std::uint32_t> major;  // none: any
  std::optional<std::uint32_t> minor;
  std::optional<bool> workstation;
  std::string_view name;
};

// The first row that matches wins. In 5.2 a workstation is the server name and the rest the workstation name, the
// reverse of 6.0 and 6.1; that is deliberate, start-up acts on exact names.
constexpr auto kRows = std::to_array<Row>({
    {0, {}, {}, {}, "Windows 3.1"},     {1, {}, 0, {}, "Windows 95"},
    {1, {}, 10, {}, "Windows 98"},      {1, {}, 90, {}, "Windows Millennium"},
    {1, {}, {}, {}, "Unknown Win32"},   {2, 3, {}, {}, "Windows NT 3.51"},
    {2, 4, {}, {}, "Windows NT 4.0"},   {2, 5, 0, {}, "Windows 2000"},
    {2, 5, 1, {}, "Windows XP"},        {2, 5, 2, true, "Windows Server 2003"},
    {2, 5, 2, false, "Windows XP x64"}, {2, 5, {}, {}, ""},
    {2, 6, 0, true, "Windows Vista"},   {2, 6, 0, false, "Windows Server 2008"},
    {2, 6, 1, true, "Windows 7"},       {2, 6, 1, false, "Windows Server 2008 R2"},
    {2, 6, 2, {}, "Windows 8"},         {2, 6, {}, {}, ""},
    {2, {}, {}, {}, "Unknown Win32NT"},
});

}  // namespace

std::string_view GetWinVer(const VersionRecord& version) {
  const bool workstation = version.product_type == kWorkstation;
  for (const Row& row : kRows) {
    if (row.platform == version.platform && row.major.value_or(version.major) == version.major &&
        row.minor.value_or(version.minor) == version.minor && row.workstation.value_or(workstation) == workstation) {
      return row.name;
    }
  }
  return "Unknown Windows";
}

}  // namespace quillcast::profile
