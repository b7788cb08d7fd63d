#include "document/picture_copies.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

#include "platform/file.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = 64UL * 1024;

Error Stopped() { return {Failure::kTryAgain, "The copying of the pictures was stopped.", ""}; }

bool IsStopped(const platform::CancelToken* cancel) {
  return cancel != nullptr && cancel->Requested() != platform::Stop::kNone;
}

// Of the blocks before and this one.
std::uint64_t DigestWith(std::uint64_t before, std::string_view block) {
  return before * 0x9E3779B97F4A7C15 + std::hash<std::string_view>{}(block);
}

// What cannot be read is like nothing.
bool AreAlike(const fs::path& one, const fs::path& other) {
  std::ifstream first(one, std::ios::binary);
  std::ifstream second(other, std::ios::binary);
  return first && second &&
         std::equal(std::istreambuf_iterator<char>(first), {}, std::istreambuf_iterator<char>(second), {});
}

fs::path NumberedName(const fs::path& wanted, int number) {
  if (number == 1) return wanted;
  return fmt::format("{} ({}){}", wanted.stem().string(), number, wanted.extension().string());
}

}  // namespace

Result<PictureCopies::Content> PictureCopies::ContentOf(const fs::path& file) const {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  Content content;
  std::string block(kBlock, '\0');
  for (;;) {
    if (IsStopped(cancel_)) return Stopped();
    std::size_t filled = 0;
    for (std::size_t more = 1; more > 0 && filled < block.size(); filled += more) {
      const auto got = platform::ReadSome(fd->get(), file, block.data() + filled, block.size() - filled);
      if (!got) return got.error();
      more = *got;
    }
    if (filled == 0) return content;
    content.size += filled;
    content.digest = DigestWith(content.digest, std::string_view(block).substr(0, filled));
  }
}

Result<fs::path> PictureCopies::Keep(const fs::path& file) {
  if (const auto known = kept_.find(file); known != kept_.end()) return known->second;
  const auto content = ContentOf(file);
  if (!content) return content.error();
  auto copy = Place({*content, file.filename(), [&](const fs::path& other) { return AreAlike(file, other); },
                     [&](const fs::path& place) { return platform::CopyFileIfAbsent(file, place, cancel_); }});
  if (copy) kept_.emplace(file, *copy);
  return copy;
}

Result<fs::path> PictureCopies::Keep(std::string_view bytes, const fs::path& name) {
  Content content{bytes.size(), 0};
  for (std::size_t at = 0; at < bytes.size(); at += kBlock) {
    content.digest = DigestWith(content.digest, bytes.substr(at, kBlock));
  }
  const auto is_alike = [&](const fs::path& other) {
    const auto there = platform::ReadFile(other, bytes.size());
    return there && *there == bytes;
  };
  return Place({content, name.filename(), is_alike,
                [&](const fs::path& place) { return platform::WriteFileIfAbsent(place, bytes); }});
}

// From name to name to the first that nothing has, unless a copy stands on the way. Who loses a name to another piece
// of work looks at what that put there.
Result<fs::path> PictureCopies::Place(const Wanted& wanted) {
  auto made = platform::EnsureFolder(folder_);
  if (!made) return made.error();
  SameName& same = names_[wanted.name];
  for (;;) {
    if (IsStopped(cancel_)) return Stopped();
    auto found = Find(wanted, same);
    if (!found || !found->empty()) return found;
    const fs::path place = folder_ / NumberedName(wanted.name, same.next);
    const auto put = wanted.put(place);
    if (!put) return put.error();
    ++same.next;
    if (*put) {
      same.read.emplace(wanted.content, place);
      return place;
    }
    std::error_code failed;
    const auto size = fs::file_size(place, failed);  // fails for what is no file
    if (!failed) same.unread[size].push_back(place);
  }
}

// Empty where there is none yet.
Result<fs::path> PictureCopies::Find(const Wanted& wanted, SameName& same) {
  if (const auto unread = same.unread.find(wanted.content.size); unread != same.unread.end()) {
    for (const fs::path& place : unread->second) {
      const auto content = ContentOf(place);
      if (IsStopped(cancel_)) return content.error();
      if (content) same.read.emplace(*content, place);
    }
    same.unread.erase(unread);
  }
  const auto [begin, end] = same.read.equal_range(wanted.content);
  const auto found = std::find_if(begin, end, [&](const auto& entry) { return wanted.is_alike(entry.second); });
  return found == end ? fs::path() : found->second;
}

}  // namespace quillcast::document
