#include "run/pace/departures.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "run/pace/file_octets.h"

namespace quillcast::run {
namespace {

// Behind all that can stand in the file: held while it is changed.
constexpr OctetRange kChanging{std::int64_t{1} << 61};
OctetRange OctetsAt(std::int64_t place) { return {place, kDepartureSize}; }

constexpr std::chrono::milliseconds kPatience = std::chrono::seconds(2);

}  // namespace

Departures::Hold::~Hold() {
  // What is not given back now is when the file is closed.
  if (departures_ != nullptr) {
    IgnoreErrors(TryLock(departures_->fd_.get(), departures_->file_, kChanging, LockKind::kNone));
  }
}

Result<Departures::Hold> Departures::HoldFile() const {
  auto hold = Lock();
  if (!hold) return hold;
  struct stat status {};
  if (::fstat(fd_.get(), &status) != 0) return platform::SystemError("read", file_, errno);
  if (status.st_nlink > 0) return hold;
  return Error{Failure::kNoInput, Say("{}, which keeps when messages went out, has been removed.", file_.string()),
               "From now on a pace goes by this run alone."};
}

Result<Departures::Hold> Departures::Lock() const {
  constexpr std::chrono::milliseconds kPause(1);
  for (std::chrono::milliseconds waited(0);; waited += kPause) {
    const auto locked = TryLock(fd_.get(), file_, kChanging, LockKind::kAlone);
    if (!locked) return locked.error();
    if (*locked) return Hold(*this);
    if (waited >= kPatience) break;
    std::this_thread::sleep_for(kPause);
  }
  return Error{Failure::kTryAgain, Say("Another program keeps {} locked.", file_.string()), "End it, or let it go on."};
}

// Without what a program that died, or a full disk, left of an entry.
Result<std::int64_t> Departures::WholeSize() const {
  const auto size = platform::FileSize(fd_.get(), file_);
  if (!size) return size.error();
  return static_cast<std::int64_t>(*size / kDepartureSize * kDepartureSize);
}

Result<void> Departures::ForEach(std::int64_t first, std::int64_t end, const Each& each) const {
  std::string block;
  for (std::int64_t place = first; place < end;) {
    block.resize(std::min(kBlock, static_cast<std::size_t>(end - place)));
    const auto read = ReadAt(fd_.get(), file_, place, block);
    if (!read) return read.error();
    if (*read < block.size()) return platform::SystemError("read", file_, EIO);
    for (std::size_t at = 0; at < block.size(); at += kDepartureSize, place += kSize) {
      if (auto done = each(place, DepartureOf({block.data() + at, kDepartureSize})); !done) return done;
    }
  }
  return {};
}

Result<void> Departures::Write(std::int64_t place, const Departure& departure) const {
  const DepartureOctets octets = OctetsOf(departure);
  return WriteAt(fd_.get(), file_, place, {octets.data(), octets.size()});
}

Result<bool> Departures::IsOnItsWay(std::int64_t place) const {
  return IsLockedByOthers(fd_.get(), file_, OctetsAt(place));
}

// What was kept by a clock that was ahead counts from now on, once: not anew for each program that opens the file.
Result<void> Departures::SetBack(std::int64_t place, Departure& departure, Moment now) const {
  if (departure.state != DepartureState::kOut || departure.when <= now) return {};
  departure.when = now;
  return Write(place, departure);
}

Result<void> Departures::SetAllBack(Moment now) const {
  const auto end = WholeSize();
  if (!end) return end.error();
  return ForEach(kBegin, *end, [&](std::int64_t place, std::optional<Departure> departure) {
    return departure ? SetBack(place, *departure, now) : Result<void>();
  });
}

Result<void> Departures::LookAfterThoseOnTheirWay(std::vector<Departure>& out, Moment now, const Visit& visit) {
  std::vector<std::int64_t> still;
  const auto look = [&](std::int64_t place, const std::optional<Departure>& departure) -> Result<void> {
    Departure is = departure.value_or(Departure{});
    if (is.state == DepartureState::kTaken) {
      const auto on_its_way = IsOnItsWay(place);
      if (!on_its_way) return on_its_way.error();
      if (*on_its_way) {
        still.push_back(place);
        return {};
      }
      is.state = DepartureState::kNone;
      if (auto written = Write(place, is); !written) return written;
    }
    visit({DepartureState::kNone, is.when, is.domain});
    auto set = SetBack(place, is, now);
    if (is.state == DepartureState::kOut) out.push_back(is);
    return set;
  };
  for (const std::int64_t place : on_their_way_) {
    if (auto looked = ForEach(place, place + kSize, look); !looked) return looked;
  }
  on_their_way_ = std::move(still);
  return {};
}

Result<void> Departures::ReadNew(std::vector<Departure>& out, Moment now, const Visit& visit) {
  const auto end = WholeSize();
  if (!end) return end.error();
  if (*end < read_to_) ++lost_;
  const auto take = [&](std::int64_t place, std::optional<Departure> departure) -> Result<void> {
    if (!departure) {
      ++lost_;
      return {};
    }
    auto set = SetBack(place, *departure, now);
    if (departure->state == DepartureState::kOut) out.push_back(*departure);
    if (departure->state == DepartureState::kTaken) {
      on_their_way_.push_back(place);
      visit(*departure);
    }
    return set;
  };
  return ForEach(std::exchange(read_to_, *end), *end, take);
}

// They stand in the order in which their turns were taken.
Result<void> Departures::Read(const Visit& visit) {
  const Moment now = clock_.Now();
  if (now < std::exchange(last_read_, now)) {
    if (auto set = SetAllBack(now); !set) return set;
  }
  std::vector<Departure> out;
  if (auto read = ReadNew(out, now, visit); !read) return read;
  if (auto looked = LookAfterThoseOnTheirWay(out, now, visit); !looked) return looked;
  std::ranges::sort(out, {}, &Departure::when);
  for (const Departure& departure : out) visit(departure);
  return {};
}

// Behind a piece of an entry, that a full disk has left, if there is one.
Result<std::int64_t> Departures::Append(std::span<const Departure> departures) {
  const auto place = WholeSize();
  if (!place) return place.error();
  std::string octets;
  for (const Departure& departure : departures) {
    const DepartureOctets each = OctetsOf(departure);
    octets.append(each.data(), each.size());
  }
  for (std::size_t n = 0; n < departures.size(); ++n) {
    if (departures[n].state != DepartureState::kTaken) continue;
    const auto locked =
        TryLock(fd_.get(), file_, OctetsAt(*place + static_cast<std::int64_t>(n) * kSize), LockKind::kAlone);
    if (!locked) return locked.error();
  }
  if (auto written = WriteAt(fd_.get(), file_, *place, octets); !written) return written.error();
  if (read_to_ == *place) read_to_ += static_cast<std::int64_t>(octets.size());
  return *place;
}

Result<void> Departures::Change(std::int64_t place, const Departure& departure) {
  if (auto written = Write(place, departure); !written) return written;
  const auto unlocked = TryLock(fd_.get(), file_, OctetsAt(place), LockKind::kNone);
  return unlocked ? Result<void>() : unlocked.error();
}

std::optional<Error> Departures::TakeLoss() {
  const std::int64_t lost = std::exchange(lost_, 0);
  if (lost == 0) return {};
  return Error{Failure::kBadData, Say("{}, which keeps when messages went out, is damaged.", file_.string()),
               "A pace goes by what is left of it."};
}

}  // namespace quillcast::run
