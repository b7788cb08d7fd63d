#include "recipients/import/archive_part.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/file.h"
#include "recipients/import/reading_given_up.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kHeaderSize = 30;        // of a part, before its name (APPNOTE 4.3.7)
constexpr std::uint64_t kMostInflated = 1032;  // bytes out of one, which deflate cannot do better
constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kDeflated = 8;

Error DamagedPart(const std::filesystem::path& file, std::string_view name) {
  return {Failure::kBadData, Say("{} is damaged: its part {} cannot be unpacked.", file.string(), name),
          "Save it again in the program that made it, or fetch it once more."};
}

// Puts the reading position at the first byte of a part. False where no part begins where the directory has it.
Result<bool> GoTo(int fd, const std::filesystem::path& file, const ArchiveEntry& entry) {
  std::array<char, kHeaderSize> header{};
  if (::lseek(fd, static_cast<off_t>(entry.offset), SEEK_SET) < 0) return platform::SystemError("read", file, errno);
  const auto count = platform::ReadSome(fd, file, header.data(), header.size());
  if (!count) return count.error();
  if (*count < header.size() || !std::string_view(header.data(), header.size()).starts_with("PK\3\4")) return false;
  const auto number = [&header](std::size_t at) {
    return static_cast<std::uint8_t>(header[at]) + 256 * static_cast<std::uint8_t>(header[at + 1]);
  };
  if (::lseek(fd, number(26) + number(28), SEEK_CUR) < 0) return platform::SystemError("read", file, errno);
  return true;
}

// What is unpacked goes behind what is in `out`, while there is room.
class Inflater {
 public:
  // Raw deflate, without a header of its own.
  Inflater() : is_ready_(inflateInit2(&stream_, -MAX_WBITS) == Z_OK) {}
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (is_ready_) inflateEnd(&stream_);
  }

  bool Feed(std::string_view packed, std::string& out, std::size_t room) {
    if (!is_ready_) return false;
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream_.avail_in = static_cast<uInt>(packed.size());
    while (stream_.avail_in > 0 && !at_end_) {
      const std::size_t before = out.size();
      out.resize(std::min(room, before + platform::kFileBlock));
      if (out.size() == before) return true;  // it goes on beyond what the directory said
      stream_.next_out = reinterpret_cast<Bytef*>(out.data() + before);
      stream_.avail_out = static_cast<uInt>(out.size() - before);
      const int code = inflate(&stream_, Z_NO_FLUSH);
      out.resize(out.size() - stream_.avail_out);
      at_end_ = code == Z_STREAM_END;
      if (code != Z_OK && !at_end_) return false;
    }
    return true;
  }
  bool at_end() const { return at_end_; }

 private:
  z_stream stream_{};
  bool is_ready_;
  bool at_end_ = false;
};

}  // namespace

Result<std::string> UnpackPart(const std::filesystem::path& file, const ArchiveDirectory& directory,
                               std::string_view name, const platform::CancelToken* cancel) {
  const ArchiveEntry* entry = directory.Find(name);
  if (entry == nullptr) return std::string();
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  const auto found = GoTo(fd->get(), file, *entry);
  if (!found) return found.error();
  if (!*found || (entry->method != kStored && entry->method != kDeflated)) return DamagedPart(file, name);
  Inflater inflater;
  std::string part;
  part.reserve(std::min(entry->unpacked, entry->packed * kMostInflated));
  std::string block;
  for (std::uint64_t left = entry->packed; left > 0 && part.size() < entry->unpacked; left -= block.size()) {
    if (IsGivenUp(cancel)) return ReadingGivenUp(file);
    block.resize(std::min<std::uint64_t>(left, platform::kFileBlock));
    const auto count = platform::ReadSome(fd->get(), file, block.data(), block.size());
    if (!count) return count.error();
    if (*count < block.size()) return DamagedPart(file, name);
    if (entry->method == kStored) {
      part += block;
    } else if (!inflater.Feed(block, part, entry->unpacked)) {
      return DamagedPart(file, name);
    } else if (inflater.at_end()) {
      break;
    }
  }
  if (part.size() != entry->unpacked) return DamagedPart(file, name);
  return part;
}

}  // namespace quillcast::recipients
