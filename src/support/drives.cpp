#include "support/drives.h"

#include <algorithm>
#include <array>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::support {
namespace {

constexpr std::size_t kLongestTable = std::size_t{1} * 1024 * 1024;  // bytes; what is behind them is not looked at
constexpr std::size_t kMountFields = 5;  // before the optional ones: two numbers, device, root and mount point
constexpr std::size_t kLongestName = 200;

struct FileSystem {
  std::string_view type;
  bool mounts_parts = false;  // what is mounted of it need not be its root
};

constexpr auto kFileSystems = std::to_array<FileSystem>({
    {"ext2"},        {"ext3"},           {"ext4"},       {"xfs"},        {"btrfs", true},
    {"zfs"},         {"bcachefs"},       {"f2fs"},       {"jfs"},        {"reiserfs"},
    {"nilfs2"},      {"vfat"},           {"msdos"},      {"exfat"},      {"ntfs"},
    {"ntfs3"},       {"fuseblk"},        {"hfs"},        {"hfsplus"},    {"udf"},
    {"iso9660"},     {"nfs", true},      {"nfs4", true}, {"cifs", true}, {"smb3", true},
    {"9p", true},    {"virtiofs", true}, {"ceph", true}, {"fuse.sshfs"}, {"fuse.glusterfs"},
    {"fuse.rclone"}, {"fuse.mergerfs"},
});

bool IsOctal(char c) { return c >= '0' && c <= '7'; }

// A blank, a tab, a line end and a backslash stand there as "\040" and the like.
std::string Decoded(std::string_view name) {
  std::string out;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const auto digits = name.substr(at + 1, 3);
    if (name[at] == '\\' && digits.size() == 3 && std::all_of(digits.begin(), digits.end(), IsOctal)) {
      out += static_cast<char>((digits[0] - '0') * 64 + (digits[1] - '0') * 8 + (digits[2] - '0'));
      at += digits.size();
    } else {
      out += name[at];
    }
  }
  return out;
}

// A container's own root is of whatever kind its host gave it.
bool IsDrive(std::string_view type, std::string_view root, std::string_view mount_point) {
  if (mount_point == "/") return true;
  const auto known = std::find_if(kFileSystems.begin(), kFileSystems.end(),
                                  [type](const FileSystem& system) { return system.type == type; });
  return known != kFileSystems.end() && (root == "/" || known->mounts_parts);
}

std::string DriveIn(std::string_view line) {
  const auto fields = platform::Split(line, ' ');
  const auto dash = std::find(fields.begin(), fields.end(), "-");
  if (dash - fields.begin() < static_cast<std::ptrdiff_t>(kMountFields) || fields.end() - dash < 2) return {};
  if (!IsDrive(dash[1], fields[3], fields[4])) return {};
  return platform::Printable(Decoded(fields[4]), kLongestName);
}

}  // namespace

std::vector<std::string> DrivesIn(std::string_view mount_table) {
  std::vector<std::string> drives;
  for (const auto line : platform::Split(mount_table, '\n')) {
    if (drives.size() == kMostDrives) break;
    std::string drive = DriveIn(line);
    const bool is_new = std::find(drives.begin(), drives.end(), drive) == drives.end();
    if (!drive.empty() && is_new) drives.push_back(std::move(drive));
  }
  return drives;
}

// The kernel writes it while it is read, so that its size is not known before.
std::vector<std::string> Drives(const std::filesystem::path& mount_table) {
  std::string table(kLongestTable, '\0');
  const auto fd = platform::OpenForReading(mount_table);
  if (!fd) return IgnoreErrors(Result<std::vector<std::string>>(fd.error()), {});
  table.resize(IgnoreErrors(platform::ReadSome(fd->get(), mount_table, table.data(), table.size()), 0));
  return DrivesIn(table);
}

}  // namespace quillcast::support
