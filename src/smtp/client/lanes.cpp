#include "smtp/client/lanes.h"

#include <algorithm>
#include <utility>

namespace quillcast::smtp {
namespace {

using platform::Stop;

constexpr std::chrono::seconds kQuitPatience{2};

// How long a connection is kept that has nothing to do: servers hang up on who says nothing for some minutes, and take
// only so many at a time.
constexpr std::chrono::seconds kIdleKept{30};

// A server that takes longer to let one in than this keeps the others from coming no more.
constexpr std::chrono::seconds kQuickWay{1};

}  // namespace

Lanes::Lanes(Surroundings& around, std::size_t connections)
    : around_(around),
      limit_(connections),
      lost_way_(around.options.network_wait, around.options.way_was_there),
      lanes_(limit_.most()) {}

ConnectionLimit::Now Lanes::Count() const {
  ConnectionLimit::Now now;
  const auto quick = around_.clock.Monotonic() - kQuickWay;
  for (const Lane& lane : lanes_) {
    if (lane.way) ++(lane.way->began() > quick ? now.coming : now.late);
    if (!lane.connection) continue;
    if (!lane.ready()) {
      ++now.leaving;
    } else {
      ++(lane.connection->accepted() ? now.working : now.coming);
    }
  }
  return now;
}

std::size_t Lanes::CountReady() const {
  return static_cast<std::size_t>(
      std::count_if(lanes_.begin(), lanes_.end(), [](const Lane& lane) { return lane.ready(); }));
}

// --- coming and going ---

void Lanes::GoOn() {
  for (Lane& lane : lanes_) {
    if (lane.way) {
      lane.way->GoOn();
      if (lane.way->done()) EndWay(lane);
    }
    if (lane.connection && lane.connection->used_up() && lane.ready()) Leave(lane);
    if (lane.connection && lane.connection->closed()) EndConnection(lane);
  }
  if (limit_.is_lowered()) limit_.Accepted(Count().working);
}

// Where none came about, and there is no other, that is the outcome of the job that waits for one, unless it waits on.
void Lanes::EndWay(Lane& lane) {
  const std::unique_ptr<WayIn> way = std::move(lane.way);
  lane.connection = way->TakeConnection();
  const std::size_t ready = CountReady();
  around_.window.SetConnections(ready);
  if (lane.connection) {
    if (!around_.jobs.HasLostLately()) lost_way_.Works();
    lost_way_.Found();
    TellInDoubt(lane, around_.clock.Monotonic() - way->began());
    return limit_.Opened();
  }
  const ConnectionLimit::Now now = Count();
  const auto moment = around_.clock.Monotonic();
  limit_.Failed(way->outcome(), ready + now.leaving, moment);
  if (now.in_all() > now.leaving || (!around_.jobs.has_next() && !around_.jobs.IsInDoubt())) return;
  if (lost_way_.Outlasts(way->outcome(), moment, around_.source->HeldFor())) {
    around_.jobs.WayLost();
    return around_.source->WayLost(way->outcome(), *lost_way_.again());
  }
  if (!lost_way_.is_over()) {
    around_.jobs.WayFound();  // by a server that answers
    if (around_.jobs.has_next()) around_.jobs.Fail(way->outcome());
    return;
  }
  around_.source->WayGivenUp(way->outcome());
  around_.jobs.GiveUp(way->outcome());
}

// One that came about at once says that the way was there. One that took long may have begun while it was not; but a
// server that always takes long is not to have its messages tried again for ever.
void Lanes::TellInDoubt(Lane& lane, platform::Duration took) {
  if (Falters(lane)) return;
  if (took < kQuickWay) {
    was_slow_ = false;
    return lost_way_.MayFalter() ? around_.jobs.HoldLost() : around_.jobs.WayFound();
  }
  if (!around_.jobs.IsInDoubt()) return;
  std::exchange(was_slow_, true) ? around_.jobs.WayFound() : around_.jobs.GoOnceMore();
}

// One that comes about is no way where whatever went over those before it was lost.
bool Lanes::Falters(Lane& lane) {
  if (!around_.jobs.IsInDoubt() || !around_.jobs.LosesAll()) return false;
  if (!lost_way_.Falters(around_.clock.Monotonic(), around_.source->HeldFor())) return false;
  const Outcome why = around_.jobs.WhyInDoubt();
  around_.jobs.WayLost();
  around_.source->WayLost(why, *lost_way_.again());
  Leave(lane);
  return true;
}

void Lanes::EndConnection(Lane& lane) {
  if (lane.ready() && lane.connection->crowded()) limit_.Refused(Count().working);
  lane.connection.reset();
  lane.idle_since.reset();
  around_.window.SetConnections(CountReady());
}

void Lanes::Leave(Lane& lane) {
  lane.idle_since.reset();
  lane.connection->Quit(kQuitPatience);
  if (lane.connection->crowded()) limit_.Refused(Count().working);
  around_.window.SetConnections(CountReady());
}

void Lanes::LeaveIdle(const std::optional<platform::Instant>& due) {
  for (Lane& lane : lanes_) {
    if (!lane.ready() || !lane.connection->idle()) continue;
    const auto now = around_.clock.Monotonic();
    if (!lane.idle_since) lane.idle_since = now;
    if (std::max(now, due.value_or(now)) >= *lane.idle_since + kIdleKept) Leave(lane);
  }
}

void Lanes::LeaveAll() {
  for (Lane& lane : lanes_) {
    lane.way.reset();
    if (lane.ready()) Leave(lane);
  }
  for (GoOn(); std::any_of(lanes_.begin(), lanes_.end(), [](const Lane& lane) { return !lane.free(); }); GoOn()) {
    Wait(net::Deadline::Never());
  }
}

void Lanes::Withdraw() {
  is_withdrawn_ = true;
  for (Lane& lane : lanes_) {
    lane.way.reset();
    if (lane.ready()) lane.connection->Withdraw();
  }
}

// --- jobs ---

// So that a run with little to do keeps few of them busy.
Lanes::Lane* Lanes::LeastBusy() {
  Lane* found = nullptr;
  for (Lane& lane : lanes_) {
    if (!lane.ready() || !lane.connection->WantsMessage()) continue;
    if (found == nullptr || lane.connection->in_flight() < found->connection->in_flight()) found = &lane;
  }
  return found;
}

// Nearly always every lane is taken, and no clock needs to be read.
bool Lanes::MayOpen() {
  const auto taken = std::count_if(lanes_.begin(), lanes_.end(), [](const Lane& lane) { return !lane.free(); });
  if (static_cast<std::size_t>(taken) >= limit_.most()) return false;
  if (lost_way_.again() && *lost_way_.again() > around_.clock.Monotonic()) return false;
  const ConnectionLimit::Now now = Count();
  const bool is_asked_for = around_.jobs.has_next() && opened_for_ == around_.jobs.next_number();
  if (is_asked_for && now.in_all() > now.leaving) return false;
  return limit_.MayOpen(now, around_.clock.Monotonic());
}

bool Lanes::IsBeingTried() const {
  return std::any_of(lanes_.begin(), lanes_.end(), [](const Lane& lane) { return lane.way != nullptr; });
}

// Whether those that were lost took the way with them. A server that says that it takes no more connections, and goes
// on well over those that it has, tells it as well as one more would.
void Lanes::ComeToKnow() {
  if (!around_.jobs.IsInDoubt() || IsBeingTried()) return;
  if (MayOpen()) return FindOut();
  if (limit_.is_told() && around_.jobs.GoesOnWell()) around_.jobs.WayFound();
}

// There is nothing to do but to find out, which no further connection may be opened for: one that is idle makes room.
void Lanes::MakeRoom() {
  if (!around_.jobs.IsInDoubt() || IsBeingTried() || lost_way_.again()) return;
  const auto leaves = [](const Lane& lane) { return lane.connection && !lane.ready(); };
  if (std::any_of(lanes_.begin(), lanes_.end(), leaves)) return;
  const auto is_idle = [](const Lane& lane) { return lane.ready() && lane.connection->idle(); };
  const auto idle = std::find_if(lanes_.begin(), lanes_.end(), is_idle);
  if (idle != lanes_.end()) Leave(*idle);
}

// For one that is lost, and then for whoever is next.
void Lanes::FindOut() {
  Lane& lane = *std::find_if(lanes_.begin(), lanes_.end(), [](const Lane& one) { return one.free(); });
  lane.way = std::make_unique<WayIn>(around_, NumberOf(lane));
  lost_way_.Tries(around_.clock.Monotonic(), around_.source->HeldFor());
}

void Lanes::Open() {
  FindOut();
  opened_for_ = around_.jobs.next_number();
}

// A connection that the server closed while there was nothing to say: the job that was for it has had one.
bool Lanes::IsGone(Lane& lane) {
  if (!lane.connection->idle() || !lane.connection->ClosedMeanwhile()) return false;
  around_.jobs.Move();
  EndConnection(lane);
  return true;
}

bool Lanes::HandOut() {
  if (!around_.Stopped()) ComeToKnow();
  while (!around_.Stopped()) {
    Lane* lane = LeastBusy();
    if (lane == nullptr && !MayOpen()) return false;
    Job* job = around_.jobs.Next();
    if (job == nullptr) {
      MakeRoom();
      return true;
    }
    if (around_.Stopped()) return false;
    if (lane == nullptr) {
      Open();
      return false;
    }
    if (IsGone(*lane)) continue;
    lane->idle_since.reset();
    around_.jobs.Submitted(NumberOf(*lane));
    lane->connection->Submit(*job);
  }
  return false;
}

// --- waiting ---

// The only one there is, where it is past its opening and has something to wait for.
Lanes::Lane* Lanes::Alone() {
  Lane* found = nullptr;
  for (Lane& lane : lanes_) {
    if (lane.free()) continue;
    if (found != nullptr || lane.way || lane.connection->idle()) return nullptr;
    found = &lane;
  }
  return found;
}

void Lanes::Wait(const net::Deadline& back) {
  if (Lane* lane = Alone()) return lane->connection->Wait(back);
  for (Lane& lane : lanes_) {
    if (lane.connection) lane.connection->Write();
    if (lane.way) lane.way->GoOn();
  }
  const bool is_over = std::any_of(lanes_.begin(), lanes_.end(), [](const Lane& lane) {
    return (lane.way && lane.way->done()) || (lane.connection && lane.connection->closed());
  });
  if (!is_over) Poll(back);
}

net::Deadline Lanes::Until(const net::Deadline& back, platform::Instant now) {
  net::Deadline until = lost_way_.again() ? Earlier(back, net::Deadline::At(*lost_way_.again())) : back;
  for (Lane& lane : lanes_) {
    if (lane.way) until = Earlier(until, lane.way->Until(now));
    if (lane.connection) until = Earlier(until, lane.connection->Until(now));
    if (lane.idle_since) until = Earlier(until, net::Deadline::After(*lane.idle_since, kIdleKept));
  }
  return until;
}

void Lanes::Poll(const net::Deadline& back) {
  descriptors_.clear();
  for (const Lane& lane : lanes_) {
    if (lane.connection) descriptors_.push_back(lane.connection->WaitsFor());
  }
  for (const Lane& lane : lanes_) {
    if (lane.way) lane.way->WaitFor(descriptors_);
  }
  // By what was done about it: a request that has come since the driver looked has to end the wait.
  const Stop gives_up_at = is_withdrawn_ ? Stop::kAbandon : Stop::kStop;
  const auto wait = [&](const net::Deadline& until) {
    return net::WaitAny(descriptors_, {around_.clock, around_.cancel, gives_up_at}, until);
  };
  const auto began = around_.clock.Monotonic();
  const auto ready =
      WaitAndShow(around_, began, Until(back, began), wait, [](const auto& got) { return got && !*got; });
  const auto now = around_.clock.Monotonic();
  auto polled = descriptors_.begin();
  for (Lane& lane : lanes_) {
    if (!lane.connection) continue;
    if (ready && (polled++)->revents != 0) lane.connection->Read();
    if (!ready && (around_.Abandoned() || ready.error().failure != Failure::kTryAgain)) {
      lane.connection->GiveUp(ready.error());
    }
    lane.connection->TimePassed(now);
  }
}

}  // namespace quillcast::smtp
