// The drives of this computer: where its file systems are mounted.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::support {

// No more are listed.
inline constexpr std::size_t kMostDrives = 64;

// The mount points of a table as proc_pid_mountinfo(5) has it that keep files on a disk or a server, each once, in its
// order: none of the system's own, no parts of others that are bound to a second place, no images of packages.
std::vector<std::string> DrivesIn(std::string_view mount_table);

// Of this process. Only the table is read and no file system asked anything, since a server that does not answer would
// hold that up for ever. Empty where the table cannot be read.
std::vector<std::string> Drives(const std::filesystem::path& mount_table = "/proc/self/mountinfo");

}  // namespace quillcast::support
