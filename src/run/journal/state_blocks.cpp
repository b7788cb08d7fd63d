#include "run/journal/state_blocks.h"

#include <algorithm>
#include <utility>

namespace quillcast::run {
namespace {

// That many are kept although nobody changed them: a run goes through them in order, and comes back to a few.
constexpr std::size_t kMostKept = 32;

}  // namespace

StateBlocks::StateBlocks(platform::Statement read, platform::Statement walk, platform::Statement write,
                         std::filesystem::path file, MailingId mailing, std::int64_t recipients)
    : read_(std::move(read)),
      walk_(std::move(walk)),
      write_(std::move(write)),
      file_(std::move(file)),
      mailing_(mailing),
      recipients_(recipients) {}

Result<StateBlocks> StateBlocks::Of(platform::Database& database, const std::filesystem::path& file, MailingId mailing,
                                    std::int64_t recipients) {
  auto read = database.Prepare("SELECT records FROM states WHERE id = ?");
  if (!read) return read.error();
  auto walk = database.Prepare("SELECT id, records FROM states WHERE id >= ? AND id < ? ORDER BY id");
  if (!walk) return walk.error();
  auto write = database.Prepare("UPDATE states SET records = ?2 WHERE id = ?1");
  if (!write) return write.error();
  return StateBlocks(*std::move(read), *std::move(walk), *std::move(write), file, mailing, recipients);
}

Result<void> StateBlocks::Check(std::int64_t block, std::string_view octets) const {
  const std::int64_t records = std::min(kBlockSize, recipients_ - block * kBlockSize);
  if (!IsBlock(octets) || std::ssize(octets) != records * static_cast<std::int64_t>(kRecordSize)) {
    return DamagedMailingIn(file_);
  }
  return {};
}

Result<StateBlocks::Kept*> StateBlocks::Fetch(std::int64_t block) {
  if (const auto known = kept_.find(block); known != kept_.end()) return &known->second;
  if (kept_.size() >= kMostKept) std::erase_if(kept_, [](const auto& each) { return !each.second.changed; });
  read_.Reset();
  if (auto bound = read_.Bind(1, BlockKey(mailing_, block)); !bound) return bound.error();
  const auto row = read_.Step();
  if (!row) return row.error();
  const std::string_view octets = *row ? read_.Bytes(0) : "";
  if (auto sound = Check(block, octets); !sound) return sound.error();
  Kept* kept = &(kept_[block] = {std::string(octets), false});
  read_.Reset();
  return kept;
}

Result<std::string_view> StateBlocks::Block(std::int64_t block) {
  const auto kept = Fetch(block);
  if (!kept) return kept.error();
  return std::string_view((*kept)->octets);
}

Result<const char*> StateBlocks::Look(std::int64_t index) {
  const auto kept = Fetch(index / kBlockSize);
  if (!kept) return kept.error();
  return (*kept)->octets.data() + static_cast<std::size_t>(index % kBlockSize) * kRecordSize;
}

Result<void> StateBlocks::Change(std::int64_t index, const StateRecord& record) {
  const auto kept = Fetch(index / kBlockSize);
  if (!kept) return kept.error();
  WriteRecord(record, (*kept)->octets.data() + static_cast<std::size_t>(index % kBlockSize) * kRecordSize);
  if (!std::exchange((*kept)->changed, true)) ++changed_;
  return {};
}

Result<void> StateBlocks::Walk(std::int64_t from,
                               const std::function<Result<bool>(std::int64_t, std::string_view)>& visit) {
  walk_.Reset();
  if (auto bound = walk_.Bind(1, BlockKey(mailing_, from)); !bound) return bound;
  if (auto bound = walk_.Bind(2, BlockKey(mailing_ + 1, 0)); !bound) return bound;
  std::int64_t expected = from;
  for (;; ++expected) {
    const auto row = walk_.Step();
    if (!row) return row.error();
    if (!*row) break;
    const std::int64_t block = walk_.Int(0) - BlockKey(mailing_, 0);
    const std::string_view octets = walk_.Bytes(1);
    if (block != expected) return DamagedMailingIn(file_);
    if (auto sound = Check(block, octets); !sound) return sound;
    const auto on = visit(block, octets);
    if (!on) return on.error();
    if (!*on) {
      walk_.Reset();
      return {};
    }
  }
  walk_.Reset();
  return expected * kBlockSize >= recipients_ ? Result<void>() : DamagedMailingIn(file_);
}

Result<void> StateBlocks::Write() {
  for (const auto& [block, kept] : kept_) {
    if (!kept.changed) continue;
    write_.Reset();
    if (auto bound = write_.Bind(1, BlockKey(mailing_, block)); !bound) return bound;
    if (auto bound = write_.BindBytes(2, kept.octets); !bound) return bound;
    if (auto done = write_.Run(); !done) return done;
  }
  write_.Reset();
  return {};
}

void StateBlocks::Written() {
  for (auto& [block, kept] : kept_) kept.changed = false;
  changed_ = 0;
}

}  // namespace quillcast::run
