// A sender over a journal of which the test knows everything: whose message is out, and what was told of whom.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "run/journal/journal_fixture.h"

namespace quillcast::run {

class Sending {
 public:
  // Takes over how `states` says that they stand, a letter for each recipient.
  Sending(JournalledRun& run, std::string states, std::mt19937& random, std::size_t window)
      : run_(&run), random_(&random), window_(window), kept_(states), told_(std::move(states)) {}

  // One turn: some go out, some are answered, and what was told is kept. False when nobody is left.
  bool Turn() {
    std::vector<std::int64_t> going;
    for (std::size_t most = (*random_)() % 8; most > 0 && in_flight_.size() + going.size() < window_; --most) {
      recipients::Recipient row;
      std::int64_t position = 0;
      if (!Take(run_->Next(row, position))) {
        is_through_ = true;
        break;
      }
      if (row.email() != test::FakeRows::AddressAt(position)) throw std::runtime_error("another row");
      if ((*random_)() % 20 == 0) {
        Tell(position, 'f', Failed());
      } else {
        run_->GoesOut(position);
        told_[position - 1] = 'o';
        going.push_back(position);
      }
    }
    for (std::size_t most = (*random_)() % 8; most > 0 && !in_flight_.empty(); --most) Answer();
    Take(run_->Record());
    kept_ = told_;
    for (const std::int64_t position : going) {
      in_flight_.push_back(position);
      ++out[position];
    }
    return !is_through_ || !in_flight_.empty();
  }

  // As it stands in the file before the Record that is under way, and after it, where the program dies then.
  std::string Before() const { return Unknown(kept_); }
  std::string After() const { return Unknown(told_); }
  std::size_t in_flight() const { return in_flight_.size(); }

  std::map<std::int64_t, int> out;  // how often each message was

 private:
  static std::string Unknown(std::string states) {
    for (char& state : states) state = state == 'o' ? 'u' : state;
    return states;
  }
  void Tell(std::int64_t position, char state, const smtp::Outcome& outcome) {
    run_->Settled(position, outcome);
    told_[position - 1] = state;
  }
  void Answer() {
    const std::size_t place = (*random_)() % std::min<std::size_t>(in_flight_.size(), 4);
    const std::int64_t position = in_flight_[place];
    in_flight_.erase(in_flight_.begin() + static_cast<std::ptrdiff_t>(place));
    switch ((*random_)() % 10) {
      case 0:
        return Tell(position, 'd', Deferred(position));
      case 1:
        return Tell(position, 'r', Refused());
      default:
        return Tell(position, 's', Sent(position));
    }
  }

  JournalledRun* run_;
  std::mt19937* random_;
  std::size_t window_;
  std::string kept_;
  std::string told_;
  std::vector<std::int64_t> in_flight_;
  bool is_through_ = false;
};

}  // namespace quillcast::run
