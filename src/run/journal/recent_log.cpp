#include "run/journal/recent_log.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

#include "run/journal/mailing_lock.h"
#include "run/journal/state_blocks.h"
#include "run/journal/varint.h"
#include "run/journal/words_table.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;

// A frame: the octets behind this head, their check number with that of the round, and the round; four octets each. A
// round begins with a frame of no octets or of some, and all zeros stand behind its last.
struct FrameHead {
  std::uint32_t size = 0;
  std::uint32_t check = 0;
  std::uint32_t round = 0;
};
constexpr std::size_t kHead = sizeof(FrameHead);
constexpr std::uint64_t kMostOctets = std::uint64_t{64} * 1024 * 1024;
constexpr char kRecord = 'r';
constexpr char kWords = 'w';

constexpr std::string_view kNameBegin = "-recent-";

std::string NameBegin(const JournalPlace& place) {
  return fmt::format("{}{}", place.file.filename().string(), kNameBegin);
}

fs::path FileOf(const JournalPlace& place, MailingId mailing) {
  return place.file.parent_path() / fmt::format("{}{}", NameBegin(place), mailing);
}

// Whose it is: another run, or a run of another journal at the same place, has other words.
std::string OwnerOf(const StoredRun& run) {
  return fmt::format("quillcast {} {} {} {} {} {}\n", run.entry.mailing, run.entry.id,
                     run.entry.began.time_since_epoch().count(), run.entry.recipients, run.boot, run.entry.history);
}

std::uint32_t CheckOf(std::string_view octets, std::uint32_t round) {
  return static_cast<std::uint32_t>(
      ::crc32(round, reinterpret_cast<const Bytef*>(octets.data()), static_cast<uInt>(octets.size())));
}

Result<void> WriteAt(int fd, const fs::path& path, std::size_t place, std::string_view octets) {
  while (!octets.empty()) {
    const ssize_t written = ::pwrite(fd, octets.data(), octets.size(), static_cast<off_t>(place));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return platform::SystemError("write", path, errno);
    place += static_cast<std::size_t>(written);
    octets.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

struct Frames {
  std::uint32_t round = 0;
  std::string told;       // one behind the other
  bool is_whole = false;  // up to the head of nothing that stands behind each
};

// A round of which nothing is told yet.
std::string Opening(std::uint32_t round) {
  std::string octets(2 * kHead, '\0');
  const FrameHead head{0, CheckOf("", round), round};
  std::memcpy(octets.data(), &head, kHead);
  return octets;
}

Frames TakeFrames(std::string_view octets) {
  Frames frames;
  while (octets.size() >= kHead) {
    FrameHead head;
    std::memcpy(&head, octets.data(), kHead);
    octets.remove_prefix(kHead);
    frames.is_whole = head.size == 0 && head.check == 0 && head.round == 0;
    if (frames.is_whole || head.size > octets.size() || (frames.round != 0 && head.round != frames.round)) break;
    const std::string_view frame = octets.substr(0, head.size);
    if (CheckOf(frame, head.round) != head.check) break;
    frames.round = head.round;
    frames.told += frame;
    octets.remove_prefix(head.size);
  }
  return frames;
}

// What was told, one after the other, into the journal.
class Taking {
 public:
  static Result<Taking> Into(platform::Database& database, const StoredMailing& mailing) {
    auto blocks = StateBlocks::Of(database, database.path(), mailing.entry.id, mailing.entry.recipients);
    if (!blocks) return blocks.error();
    auto words = WordsWriter::After(database, database.path(), mailing.entry.id);
    if (!words) return words.error();
    return Taking(*std::move(blocks), *std::move(words), mailing.entry.recipients);
  }

  // False at the end, and where what stands there, and is left, is nothing that a run tells.
  Result<bool> Next(std::string_view& told) {
    if (told.empty()) return false;
    std::string_view rest = told.substr(1);
    std::uint64_t read = 0;
    if (!TakeVarint(rest, read)) return false;
    const auto number = static_cast<std::int64_t>(read);
    auto taken = told.front() == kRecord ? TakeRecord(number, rest)
                                         : Result<bool>(told.front() == kWords && TakeSaid(number, rest));
    if (taken && *taken) told = rest;
    return taken;
  }
  Result<void> Write() {
    if (auto written = blocks_.Write(); !written) return written;
    return words_.Write();
  }
  // What was told is all: who is reserved and not in flight did not go out.
  Result<void> LetGoOfReserved() {
    std::vector<std::int64_t> reserved;
    const auto look = [&](std::int64_t block, std::string_view octets) -> Result<bool> {
      for (std::size_t at = 0; at < octets.size(); at += kRecordSize) {
        if (!IsReservedAt(octets.data() + at) || StateAt(octets.data() + at) == ResultState::kInFlight) continue;
        reserved.push_back(block * kBlockSize + static_cast<std::int64_t>(at / kRecordSize));
      }
      return true;
    };
    if (auto walked = blocks_.Walk(0, look); !walked) return walked;
    for (const std::int64_t index : reserved) {
      const auto octets = blocks_.Look(index);
      if (!octets) return octets.error();
      StateRecord record = ReadRecord(*octets);
      record.reserved = false;
      if (auto changed = blocks_.Change(index, record); !changed) return changed;
    }
    return blocks_.Write();
  }

 private:
  Taking(StateBlocks blocks, WordsWriter words, std::int64_t recipients)
      : blocks_(std::move(blocks)), words_(std::move(words)), recipients_(recipients) {}

  Result<bool> TakeRecord(std::int64_t index, std::string_view& told) {
    if (index < 0 || index >= recipients_ || !IsBlock(told.substr(0, kRecordSize))) return false;
    const auto changed = blocks_.Change(index, ReadRecord(told.data()));
    told.remove_prefix(kRecordSize);
    return changed ? Result<bool>(true) : Result<bool>(changed.error());
  }
  // Those that were committed are there.
  bool TakeSaid(std::int64_t number, std::string_view& told) {
    ResultWords words;
    if (!TakeWords(told, words)) return false;
    return number < words_.next() || words_.Add(words) == number;
  }

  StateBlocks blocks_;
  WordsWriter words_;
  std::int64_t recipients_;
};

// The mailings that have something, by the names of its files.
std::vector<MailingId> MailingsWithRecent(const JournalPlace& place) {
  std::vector<MailingId> mailings;
  const std::string begin = NameBegin(place);
  std::error_code error;
  for (fs::directory_iterator each(place.file.parent_path(), error), end; !error && each != end;
       each.increment(error)) {
    const std::string name = each->path().filename().string();
    if (!name.starts_with(begin) || !each->is_regular_file(error)) continue;
    MailingId mailing = 0;
    const auto [last, fault] = std::from_chars(name.data() + begin.size(), name.data() + name.size(), mailing);
    if (fault == std::errc() && last == name.data() + name.size() && mailing > 0) mailings.push_back(mailing);
  }
  return mailings;
}

// Not under the mailing's lock, by which others would take its run for one that goes on, but under that of the file as
// a whole: until it is removed, no run begins another one in its place.
Result<void> TakeRecentOf(platform::Database& database, const JournalPlace& place, MailingId mailing) {
  auto transaction = platform::Transaction::Begin(database);
  if (!transaction) return transaction.error();
  const auto lock = MailingLock::Wait(place.Locks(), place.patience.lock_wait);  // as whoever begins one: in this order
  if (!lock) return lock.error();
  // Whoever takes it up from now on waits for the end of this transaction.
  const auto in_hand = IsInHand(place.Locks(), mailing);
  if (!in_hand || *in_hand) return in_hand ? Result<void>() : in_hand.error();
  const auto stored = ReadMailing(database, mailing);
  if (stored) {
    if (auto taken = TakeRecentIn(database, place, *stored); !taken) return taken;
  } else if (stored.error().failure != Failure::kNoInput) {
    return stored.error();
  }
  if (auto committed = transaction->Commit(); !committed) return committed;
  RemoveRecentOf(place, mailing);
  return {};
}

}  // namespace

Result<std::unique_ptr<RecentLog>> RecentLog::Begin(const JournalPlace& place, const StoredRun& run) {
  const fs::path path = FileOf(place, run.entry.mailing);
  const auto lock = MailingLock::Wait(place.Locks(), place.patience.lock_wait);
  if (!lock) return lock.error();
  std::error_code kept;
  fs::remove(path, kept);  // whoever still reads it is not disturbed
  platform::UniqueFd fd(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!fd) {
    const int why = errno;
    const bool may_not_go = kept && !fs::is_directory(path, IgnoreErrors());
    return may_not_go ? platform::SystemError("write", path, kept.value()) : platform::SystemError("create", path, why);
  }
  const std::string owner = OwnerOf(run);
  std::unique_ptr<RecentLog> log(new RecentLog(std::move(fd), path, owner.size()));
  if (auto written = WriteAt(log->fd_.get(), path, 0, owner + Opening(log->round_)); !written) return written.error();
  log->frame_.assign(kHead, '\0');
  return log;
}

void RecentLog::Changed(std::int64_t index, const StateRecord& record) {
  std::array<char, kRecordSize> octets{};
  WriteRecord(record, octets.data());
  frame_ += kRecord;
  AppendVarint(static_cast<std::uint64_t>(index), frame_);
  frame_.append(octets.data(), octets.size());
}

void RecentLog::Said(std::uint32_t number, const ResultWords& words) {
  frame_ += kWords;
  AppendVarint(number, frame_);
  AppendWords({}, words, frame_);
}

Result<void> RecentLog::Append() {
  const std::size_t size = frame_.size();
  if (size == kHead) return {};
  const auto told = std::string_view(frame_).substr(kHead);
  const FrameHead head{static_cast<std::uint32_t>(told.size()), CheckOf(told, round_), round_};
  std::memcpy(frame_.data(), &head, kHead);
  frame_.append(kHead, '\0');
  auto written = WriteAt(fd_.get(), path_, end_, frame_);
  if (written) end_ += size;
  // Part of it may be there: what stood there before had room, and says that nothing was told behind it.
  if (!written) {
    IgnoreErrors(WriteAt(fd_.get(), path_, end_, end_ == begin_ ? Opening(round_) : std::string(kHead, '\0')));
  }
  frame_.resize(written ? kHead : size);  // the next time, with what is told until then
  return written;
}

void RecentLog::BeginAnew() {
  ++round_;
  end_ = begin_;
  // The next Append may fail as well, and the round before the next is as far back as is known to be committed.
  if (frame_.size() != kHead) IgnoreErrors(WriteAt(fd_.get(), path_, begin_, Opening(round_)));
  frame_.resize(kHead);
}

void RecentLog::Remove() { fs::remove(path_, IgnoreErrors()); }

void RemoveRecentOf(const JournalPlace& place, MailingId mailing) {
  fs::remove(FileOf(place, mailing), IgnoreErrors());
}

Result<void> TakeRecentIn(platform::Database& database, const JournalPlace& place, const StoredMailing& mailing) {
  const StoredRun& run = mailing.runs.back();
  if (run.entry.ended || run.boot != place.boot || run.boot.empty()) return {};
  const fs::path path = FileOf(place, mailing.entry.id);
  if (!fs::is_regular_file(fs::symlink_status(path, IgnoreErrors()))) return {};
  const auto octets = platform::ReadFile(path, kMostOctets);
  // What may not be read now stays for whoever may; what is too large is nobody's.
  if (!octets && octets.error().failure != Failure::kBadData && fs::exists(path, IgnoreErrors())) {
    return octets.error();
  }
  if (!octets) return {};
  const std::string owner = OwnerOf(run);
  if (!octets->starts_with(owner)) return {};
  const Frames frames = TakeFrames(std::string_view(*octets).substr(owner.size()));
  // Killed right behind a commit: all that was told before it is in it.
  const bool is_nothing_told_since = std::int64_t{frames.round} + 1 == run.round;
  if (frames.round != run.round && !is_nothing_told_since) return {};  // an earlier state of the file
  auto taking = Taking::Into(database, mailing);
  if (!taking) return taking.error();
  std::string_view told = is_nothing_told_since ? std::string_view() : frames.told;
  for (bool more = !told.empty(); more;) {
    const auto next = taking->Next(told);
    if (!next) return next.error();
    more = *next;
  }
  if (auto written = taking->Write(); !written || !frames.is_whole || !told.empty()) return written;
  return taking->LetGoOfReserved();
}

Result<std::vector<MailingId>> TakeAllRecentIn(platform::Database& database, const JournalPlace& place) {
  std::vector<MailingId> without_room;
  for (const MailingId mailing : MailingsWithRecent(place)) {
    const auto in_hand = IsInHand(place.Locks(), mailing);
    if (!in_hand || *in_hand) continue;
    const auto taken = TakeRecentOf(database, place, mailing);
    if (!taken && taken.error().failure == Failure::kTryAgain) return taken.error();
    if (!taken && taken.error().failure == Failure::kIo) without_room.push_back(mailing);
  }
  return without_room;
}

}  // namespace quillcast::run
