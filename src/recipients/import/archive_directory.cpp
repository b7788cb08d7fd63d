#include "recipients/import/archive_directory.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::recipients {
namespace {

// The records of the format, by its own names (APPNOTE 4.3.12 to 4.3.16).
constexpr std::string_view kEndSignature = "PK\5\6";
constexpr std::string_view kEnd64Signature = "PK\6\6";
constexpr std::string_view kLocatorSignature = "PK\6\7";
constexpr std::string_view kEntrySignature = "PK\1\2";
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kLocatorSize = 20;
constexpr std::size_t kEntrySize = 46;
constexpr std::size_t kLongestComment = 65'535;
constexpr std::uint64_t kLargestDirectory = std::uint64_t{16} * 1024 * 1024;
constexpr std::uint32_t kIsIn64 = 0xFFFFFFFF;
constexpr std::uint16_t kExtra64 = 1;
constexpr std::uint16_t kEncryptedFlag = 1;

std::uint64_t Number(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i) {
    number |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes[at + i])) << (8 * i);
  }
  return number;
}

Error Damaged(const std::filesystem::path& file) {
  return {Failure::kBadData, Say("{} is damaged: it is no whole archive.", file.string()),
          "Save it again in the program that made it, or fetch it once more."};
}

struct Place {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

Result<std::string> ReadAt(int fd, const std::filesystem::path& file, const Place& place) {
  if (::lseek(fd, static_cast<off_t>(place.offset), SEEK_SET) < 0) return platform::SystemError("read", file, errno);
  std::string bytes(place.size, '\0');
  const auto count = platform::ReadSome(fd, file, bytes.data(), bytes.size());
  if (!count) return count.error();
  if (*count < bytes.size()) return Damaged(file);
  return bytes;
}

// Where the directory is, by the record at the end; of a large archive by the one that the locator before it names.
Result<Place> PlaceOfDirectory(int fd, const std::filesystem::path& file, std::uint64_t file_size) {
  const std::uint64_t tail_size = std::min<std::uint64_t>(file_size, kEndSize + kLongestComment + kLocatorSize);
  const auto tail = ReadAt(fd, file, {file_size - tail_size, tail_size});
  if (!tail) return tail.error();
  const auto end = tail->rfind(kEndSignature);
  if (end == std::string::npos || tail->size() - end < kEndSize) return Damaged(file);
  Place place{Number(*tail, end + 16, 4), Number(*tail, end + 12, 4)};
  const bool has_locator = end >= kLocatorSize && tail->compare(end - kLocatorSize, 4, kLocatorSignature) == 0;
  if (has_locator) {
    const auto record = ReadAt(fd, file, {Number(*tail, end - kLocatorSize + 8, 8), kEnd64Size});
    if (!record || !record->starts_with(kEnd64Signature)) return Damaged(file);
    place = {Number(*record, 48, 8), Number(*record, 40, 8)};
  }
  if (place.size > kLargestDirectory || place.offset > file_size || place.size > file_size - place.offset)
    return Damaged(file);
  return place;
}

// Takes a number of eight bytes off the front of a field for one that did not fit into its four.
bool TakeLarge(std::string_view& field, std::uint64_t& number) {
  if (number != kIsIn64) return true;
  if (field.size() < 8) return false;
  number = Number(field, 0, 8);
  field.remove_prefix(8);
  return true;
}

// Sizes that do not fit stand in a field of their own (APPNOTE 4.5.3). False where it is missing.
bool TakeLargeSizes(std::string_view extra, ArchiveEntry& entry) {
  if (entry.unpacked != kIsIn64 && entry.packed != kIsIn64 && entry.offset != kIsIn64) return true;
  while (extra.size() >= 4) {
    const std::uint64_t id = Number(extra, 0, 2);
    const std::uint64_t size = Number(extra, 2, 2);
    extra.remove_prefix(4);
    if (size > extra.size()) return false;
    std::string_view field = extra.substr(0, size);
    if (id == kExtra64) {
      return TakeLarge(field, entry.unpacked) && TakeLarge(field, entry.packed) && TakeLarge(field, entry.offset);
    }
    extra.remove_prefix(size);
  }
  return false;
}

// Takes one entry off the front of the directory.
std::optional<ArchiveEntry> TakeEntry(std::string_view& bytes) {
  if (bytes.size() < kEntrySize || !bytes.starts_with(kEntrySignature)) return {};
  ArchiveEntry entry;
  entry.is_encrypted = (Number(bytes, 8, 2) & kEncryptedFlag) != 0;
  entry.method = static_cast<std::uint16_t>(Number(bytes, 10, 2));
  entry.offset = Number(bytes, 42, 4);
  entry.packed = Number(bytes, 20, 4);
  entry.unpacked = Number(bytes, 24, 4);
  const std::uint64_t name_size = Number(bytes, 28, 2);
  const std::uint64_t extra_size = Number(bytes, 30, 2);
  const std::uint64_t whole = kEntrySize + name_size + extra_size + Number(bytes, 32, 2);
  if (bytes.size() < whole) return {};
  entry.name = bytes.substr(kEntrySize, name_size);
  if (!TakeLargeSizes(bytes.substr(kEntrySize + name_size, extra_size), entry)) return {};
  bytes.remove_prefix(whole);
  return entry;
}

}  // namespace

Result<ArchiveDirectory> ArchiveDirectory::Parse(std::string_view bytes, const std::filesystem::path& file) {
  ArchiveDirectory directory;
  while (!bytes.empty()) {
    auto entry = TakeEntry(bytes);
    if (!entry) return Damaged(file);
    directory.entries_.push_back(std::move(*entry));
  }
  return directory;
}

Result<ArchiveDirectory> ArchiveDirectory::Read(const std::filesystem::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  const auto size = platform::FileSize(fd->get(), file);
  if (!size) return size.error();
  const auto place = PlaceOfDirectory(fd->get(), file, *size);
  if (!place) return place.error();
  const auto bytes = ReadAt(fd->get(), file, *place);
  if (!bytes) return bytes.error();
  return Parse(*bytes, file);
}

const ArchiveEntry* ArchiveDirectory::Find(std::string_view name) const {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [name](const auto& entry) { return entry.name == name; });
  return found == entries_.end() ? nullptr : &*found;
}

Result<void> ArchiveDirectory::CheckSizes(const std::filesystem::path& file) const {
  std::uint64_t packed = 0;
  std::uint64_t unpacked = 0;
  for (const ArchiveEntry& entry : entries_) {
    unpacked += std::min(entry.unpacked, kMostUnpacked + 1);  // so that no sum runs over
    packed += std::min(entry.packed, kMostUnpacked + 1);
    if (unpacked > kMostUnpacked) {
      return Error{Failure::kBadData,
                   Say("{} would unpack to more than {}.", file.string(), platform::HumanSize(kMostUnpacked)),
                   "Save the list as delimited text, which may be of any size."};
    }
  }
  if (unpacked / kMostGrowth <= packed) return {};
  return Error{Failure::kBadData,
               Say("{} would unpack to more than {} times its size, which no list does.", file.string(), kMostGrowth),
               "Where it is a list all the same, save it as delimited text."};
}

}  // namespace quillcast::recipients
