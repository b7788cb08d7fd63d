// The directory of a ZIP archive: what is in it and how large, without unpacking anything.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"

namespace quillcast::recipients {

struct ArchiveEntry {
  std::string name;
  std::uint64_t packed = 0;    // bytes, as the directory says
  std::uint64_t unpacked = 0;  // as well
  std::uint64_t offset = 0;    // of its own header in the file
  std::uint16_t method = 0;    // by which it is packed
  bool is_encrypted = false;
};

class ArchiveDirectory {
 public:
  // What would be unpacked out of an archive that is read, and how much out of each packed byte.
  static constexpr std::uint64_t kMostUnpacked = std::uint64_t{512} * 1024 * 1024;
  static constexpr std::uint64_t kMostGrowth = 200;

  // Errors: kNoInput for a file that cannot be read, kBadData for one that is no whole archive.
  static Result<ArchiveDirectory> Read(const std::filesystem::path& file);
  // The same of the bytes of a directory alone; for tests. Nothing where they are none.
  static Result<ArchiveDirectory> Parse(std::string_view bytes, const std::filesystem::path& file);

  const std::vector<ArchiveEntry>& entries() const { return entries_; }
  // nullptr where there is none of that name.
  const ArchiveEntry* Find(std::string_view name) const;
  bool Holds(std::string_view name) const { return Find(name) != nullptr; }
  // kBadData for what would fill the memory when it is unpacked.
  Result<void> CheckSizes(const std::filesystem::path& file) const;

 private:
  std::vector<ArchiveEntry> entries_;
};

}  // namespace quillcast::recipients
