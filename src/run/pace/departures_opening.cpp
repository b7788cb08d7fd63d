// Opening the file of what went out: what of it is kept, and mended.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>

#include "run/pace/departures.h"
#include "run/pace/file_octets.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kHeader = "Quillcast out 1\n";
constexpr std::string_view kAnyHeader = kHeader.substr(0, 14);

// Behind all that can stand in the file: held while it is open.
constexpr OctetRange kOpen{(std::int64_t{1} << 61) + 1};

// Entries that count no more, so few that a new file costs more.
constexpr std::int64_t kWorthCutting = 1024;

}  // namespace

Result<std::unique_ptr<Departures>> Departures::OpenOnce(const fs::path& file, const platform::Clock& clock) {
  platform::UniqueFd fd(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!fd) return platform::SystemError("open", file, errno);
  struct stat status {};
  if (::fstat(fd.get(), &status) != 0) return platform::SystemError("read", file, errno);
  if (!S_ISREG(status.st_mode)) return platform::NotAnOrdinaryFile(file, status.st_mode);
  return std::unique_ptr<Departures>(new Departures(file, std::move(fd), clock));
}

// Cutting replaces the file: who had opened it meanwhile opens it once more.
Result<std::unique_ptr<Departures>> Departures::Open(const fs::path& file, const platform::Clock& clock) {
  std::int64_t lost = 0;
  for (bool was_cut = false;;) {
    auto opened = OpenOnce(file, clock);
    if (!opened) return opened.error();
    Departures& departures = **opened;
    auto hold = departures.Lock();
    if (!hold) return hold.error();
    const auto in_place = departures.IsInPlace();
    if (!in_place) return in_place.error();
    if (!*in_place) continue;
    const auto cut = was_cut ? Result<bool>(false) : departures.Cut();
    if (!cut) return cut.error();
    departures.lost_ = lost += departures.lost_;
    departures.read_to_ = kBegin;
    was_cut = *cut;
    if (was_cut) continue;
    if (auto kept = departures.KeepClock(); !kept) return kept.error();
    const auto shared = TryLock(departures.fd_.get(), file, kOpen, LockKind::kShared);
    if (!shared) return shared.error();
    return std::move(*opened);
  }
}

Result<bool> Departures::IsInPlace() const {
  struct stat here {};
  struct stat there {};
  if (::fstat(fd_.get(), &here) != 0) return platform::SystemError("read", file_, errno);
  if (::lstat(file_.c_str(), &there) != 0 && errno != ENOENT) return platform::SystemError("read", file_, errno);
  return here.st_ino == there.st_ino && here.st_dev == there.st_dev;
}

// False where something else stands there.
Result<bool> Departures::HasHeader() {
  static_assert(kHeader.size() == kBegin);
  std::array<char, kHeader.size()> octets{};
  const auto read = ReadAt(fd_.get(), file_, 0, octets);
  if (!read) return read.error();
  const std::string_view header(octets.data(), *read);
  if (header == kHeader) return true;
  if (header.empty()) {
    if (auto written = WriteAt(fd_.get(), file_, 0, kHeader); !written) return written.error();
    return true;
  }
  if (!header.starts_with(kAnyHeader)) return false;
  return Error{Failure::kUnavailable, Say("{} is of a newer version of this program.", file_.string()),
               "Use the newer version."};
}

// True where another file stands in its place now. What others have open stays, for they know the places in it.
Result<bool> Departures::Cut() {
  const Uptime now = clock_.SinceBoot();
  const auto header = HasHeader();
  if (!header) return header.error();
  std::int64_t of_no_use = 0;
  if (*header) {
    if (auto kept = KeepClock(); !kept) return kept.error();
    const auto mended = Mend(now - kLongestRule);
    if (!mended) return mended.error();
    of_no_use = *mended;
  } else {
    ++lost_;
  }
  if (*header && of_no_use < kWorthCutting) return false;
  const auto alone = TryLock(fd_.get(), file_, kOpen, LockKind::kAlone);
  if (!alone) return alone.error();
  if (!*alone && *header) return false;
  const auto replaced = Replace(*header ? now - kLongestRule : now);
  if (!replaced && !*header) return replaced.error();
  IgnoreErrors(replaced);  // it is as good as it is, only longer
  return static_cast<bool>(replaced);
}

// Gives how many count no more.
Result<std::int64_t> Departures::Mend(Uptime counts_after) {
  const auto end = WholeSize();
  if (!end) return end.error();
  if (::ftruncate(fd_.get(), *end) != 0) return platform::SystemError("write", file_, errno);
  std::int64_t of_no_use = 0;
  const auto mended = ForEach(kBegin, *end, [&](std::int64_t place, const std::optional<Departure>& departure) {
    Departure is = departure.value_or(Departure{});
    if (!departure) ++lost_;
    if (is.state == DepartureState::kTaken) {
      const auto on_its_way = IsOnItsWay(place);
      if (!on_its_way) return Result<void>(on_its_way.error());
      if (!*on_its_way) is.state = DepartureState::kNone;  // for whom: others may count it still
    }
    if (!clocks_.IsTold(place)) is.when = std::min(is.when, clock_.Now());
    const bool is_out = is.state == DepartureState::kOut;
    if (is.state == DepartureState::kNone || (is_out && clocks_.WhenOf(place, is.when) <= counts_after)) ++of_no_use;
    return departure == is ? Result<void>() : Write(place, is);
  });
  if (!mended) return mended.error();
  return of_no_use;
}

// By the clock of now, which is told first.
Result<void> Departures::Replace(Uptime counts_after) {
  const auto end = WholeSize();
  if (!end) return end.error();
  KeptClocks clocks(clock_);
  std::string kept(kHeader);
  const auto keep = [&kept](const Departure& departure) {
    const DepartureOctets octets = OctetsOf(departure);
    kept.append(octets.data(), octets.size());
  };
  if (const auto clock = clocks.Missing()) {
    clocks.Learn(kBegin, *clock);
    keep(*clock);
  }
  return platform::ReplaceFile(file_, [&](int fd) {
    const auto copied = ForEach(kBegin, *end, [&](std::int64_t place, const std::optional<Departure>& departure) {
      if (!departure || departure->state != DepartureState::kOut) return Result<void>();
      const Uptime when = clocks_.WhenOf(place, departure->when);
      if (when <= counts_after) return Result<void>();
      keep({DepartureState::kOut, clocks.TimeOf(*end, when), departure->domain});
      if (kept.size() < kBlock) return Result<void>();
      return platform::WriteAll(fd, file_, std::exchange(kept, {}));
    });
    return copied ? platform::WriteAll(fd, file_, kept) : copied;
  });
}

}  // namespace quillcast::run
