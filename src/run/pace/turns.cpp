#include "run/pace/turns.h"

#include <span>
#include <utility>

namespace quillcast::run {
namespace {

Error WithWhatItMeans(Error error) {
  const Sentence means = "From now on a pace goes by this run alone.";
  error.remedy = error.remedy.empty() ? means : Say("{} {}", means, error.remedy);
  return error;
}

}  // namespace

Turns::Turns(const PaceRules& rules, const std::filesystem::path& file, const platform::Clock& clock, Tell tell)
    : rules_(rules), clock_(clock), tell_(std::move(tell)), pace_(rules, clock) {
  auto opened = Departures::Open(file, clock);
  if (opened) {
    departures_ = *std::move(opened);
    Keep({});
  } else {
    Keep(opened.error());
  }
}

void Turns::Keep(const Result<void>& done) {
  if (!done) {
    departures_.reset();
    tell_(WithWhatItMeans(done.error()));
  } else if (const auto loss = departures_->TakeLoss()) {
    tell_(*loss);
  }
}

Result<void> Turns::ReadOthers() {
  return departures_->Read([this](DepartureState state, Domain domain, Uptime when) {
    switch (state) {
      case DepartureState::kTaken:
        return pace_.Taken(domain);
      case DepartureState::kNone:
        return pace_.GivenBack(domain);
      case DepartureState::kOut:
        return pace_.WentOut(domain, when);
      case DepartureState::kClock:
        return;
    }
  });
}

Wait Turns::Take(Turn& turn) {
  Wait wait{};
  if (departures_) Keep(TryTake(turn, wait));
  if (!departures_) wait = Due(turn.domain);
  if (!wait.why) {
    turn.taken = true;
    pace_.Taken(turn.domain);
  }
  return wait;
}

Result<void> Turns::TryTake(Turn& turn, Wait& wait) {
  const auto hold = departures_->HoldFile();
  if (!hold) return hold.error();
  if (auto read = ReadOthers(); !read) return read;
  wait = Due(turn.domain);
  if (wait.why) return {};
  const auto place = departures_->Append(DepartureState::kTaken, {&turn.domain, 1});
  if (!place) return place.error();
  turn.place = *place;
  return {};
}

void Turns::GiveBack(Turn& turn) {
  if (!std::exchange(turn.taken, false)) return;
  pace_.GivenBack(turn.domain);
  const auto place = std::exchange(turn.place, {});
  if (place && departures_) Keep(TryGiveBack(*place, turn.domain));
}

Result<void> Turns::TryGiveBack(std::int64_t place, Domain domain) {
  const auto hold = departures_->HoldFile();
  return hold ? departures_->Change(place, DepartureState::kNone, domain) : hold.error();
}

void Turns::GoesOut(Turn& turn) {
  going_out_.push_back(turn);
  turn.taken = false;
  turn.place.reset();
  turn.out_since = clock_.SinceBoot();
}

void Turns::ComesBack(Turn& turn) {
  const auto since = std::exchange(turn.out_since, {});
  if (since && HasPace()) pace_.ComesBack(turn.domain, *since);
}

void Turns::Record() {
  if (going_out_.empty()) return;
  if (departures_) Keep(TryRecord());
  const Uptime now = clock_.SinceBoot();
  for (const Turn& turn : going_out_) {
    if (turn.taken) pace_.GivenBack(turn.domain);
    if (HasPace()) pace_.WentOut(turn.domain, now);
  }
  going_out_.clear();
}

// One write for all that no turn was taken for.
Result<void> Turns::TryRecord() {
  const auto hold = departures_->HoldFile();
  if (!hold) return hold.error();
  if (HasPace()) {
    if (auto read = ReadOthers(); !read) return read;
  }
  std::vector<Domain> out;
  for (const Turn& turn : going_out_) {
    if (!turn.place) {
      out.push_back(turn.domain);
    } else if (auto changed = departures_->Change(*turn.place, DepartureState::kOut, turn.domain); !changed) {
      return changed;
    }
  }
  const auto appended = departures_->Append(DepartureState::kOut, out);
  return appended ? Result<void>() : appended.error();
}

}  // namespace quillcast::run
