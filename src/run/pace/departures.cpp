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
  return Error{Failure::kNoInput, Say("{}, which keeps when messages went out, has been removed.", file_.string()), ""};
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

// What others have told of it is read first, by runs without a pace, too.
Result<void> Departures::KeepClock() {
  const auto end = WholeSize();
  if (!end) return end.error();
  clocks_.Forget(*end);
  const auto learn = [this](std::int64_t place, const std::optional<Departure>& departure) -> Result<void> {
    if (departure) clocks_.Learn(place, *departure);
    return {};
  };
  if (auto read = ForEach(std::exchange(clocks_read_to_, *end), *end, learn); !read) return read;
  const auto missing = clocks_.Missing();
  if (!missing) return {};
  if (auto written = Write(*end, *missing); !written) return written;
  clocks_.Learn(*end, *missing);
  clocks_read_to_ += kSize;
  return {};
}

Result<void> Departures::LookAfterThoseOnTheirWay(std::vector<Out>& out, const Visit& visit) {
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
    const Uptime when = clocks_.WhenOf(place, is.when);
    visit(DepartureState::kNone, is.domain, when);
    if (is.state == DepartureState::kOut) out.push_back({is.domain, when});
    return {};
  };
  for (const std::int64_t place : on_their_way_) {
    if (auto looked = ForEach(place, place + kSize, look); !looked) return looked;
  }
  on_their_way_ = std::move(still);
  return {};
}

Result<void> Departures::ReadNew(std::vector<Out>& out, const Visit& visit) {
  const auto end = WholeSize();
  if (!end) return end.error();
  if (*end < read_to_) ++lost_;
  const auto take = [&](std::int64_t place, std::optional<Departure> departure) -> Result<void> {
    if (!departure) {
      ++lost_;
      return {};
    }
    const Uptime when = clocks_.WhenOf(place, departure->when);
    if (departure->state == DepartureState::kOut) out.push_back({departure->domain, when});
    if (departure->state == DepartureState::kTaken) {
      on_their_way_.push_back(place);
      visit(DepartureState::kTaken, departure->domain, when);
    }
    return {};
  };
  return ForEach(std::exchange(read_to_, *end), *end, take);
}

// They stand in the order in which their turns were taken.
Result<void> Departures::Read(const Visit& visit) {
  if (auto kept = KeepClock(); !kept) return kept;
  std::vector<Out> out;
  if (auto read = ReadNew(out, visit); !read) return read;
  if (auto looked = LookAfterThoseOnTheirWay(out, visit); !looked) return looked;
  std::ranges::sort(out, {}, &Out::when);
  for (const Out& each : out) visit(DepartureState::kOut, each.domain, each.when);
  return {};
}

// Behind a piece of an entry, that a full disk has left, if there is one.
Result<std::int64_t> Departures::Append(DepartureState state, std::span<const Domain> domains) {
  if (auto kept = KeepClock(); !kept) return kept.error();
  const auto place = WholeSize();
  if (!place) return place.error();
  std::string octets;
  for (const Domain domain : domains) {
    const DepartureOctets each = OctetsOf({state, clocks_.TimeOf(*place, clock_.SinceBoot()), domain});
    octets.append(each.data(), each.size());
  }
  const auto end = *place + static_cast<std::int64_t>(octets.size());
  for (std::int64_t each = *place; state == DepartureState::kTaken && each < end; each += kSize) {
    const auto locked = TryLock(fd_.get(), file_, OctetsAt(each), LockKind::kAlone);
    if (!locked) return locked.error();
  }
  if (auto written = WriteAt(fd_.get(), file_, *place, octets); !written) return written.error();
  if (read_to_ == *place) read_to_ = end;
  return *place;
}

Result<void> Departures::Change(std::int64_t place, DepartureState state, Domain domain) {
  if (auto written = Write(place, {state, clocks_.TimeOf(place, clock_.SinceBoot()), domain}); !written) return written;
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
