// Those for whom no server took anything, the last of a run in a row, and whose failure that is.
#pragma once

#include <cstdint>
#include <deque>
#include <iterator>

#include "run/journal/run_journal.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// That no server takes anything, or not from this sender, is nobody's failure: they are to be tried again by whoever
// goes on with the run, and are kept so from when they are lost. Once a server comes as far as to the recipient of one
// that went out after them, it was something of theirs, and they have failed; but for those for whom no connection came
// about, as no server can have known whom that was for.
class ThoseLost {
 public:
  // `run` must outlive it.
  explicit ThoseLost(JournalledRun& run) : run_(run) {}

  // One more. `before`: tries in runs that this one goes on with; `tries`: all of them.
  void Add(std::int64_t position, int before, int tries, const smtp::Outcome& outcome);
  // One more, of whom it stays unknown whether a message of before came: they count, but are not tried again.
  void AddInDoubt(std::int64_t position);

  // How many were lost, in all.
  std::int64_t count() const { return count_; }
  // How many of them are in a row at the end: none was settled or left since.
  std::int64_t in_a_row() const { return std::ssize(in_a_row_); }
  // Whether so many in a row were never lost before that whoever sends is to be asked. Those who were do not count, for
  // then nobody would ever come to those behind twenty at whom a server hangs up.
  bool AreManyAnew() const;
  // Whether a server may have hung up for something of each, in a row: they are few, and it was there for all of them.
  bool MayBeTheirDoing() const;

  // The first so many of all that were lost have failed, where they are not settled yet.
  void Fail(std::int64_t count);
  // At whom a server that was there hung up, when they were asked a second time: that is theirs.
  void FailThoseLostTwice();
  // They stay as they are.
  void Leave();
  // How many of those who are settled are to be tried again all the same: it was not their doing.
  std::int64_t left() const { return left_; }

 private:
  struct Lost {
    std::int64_t position = 0;
    int before = 0;              // tries in runs that this one goes on with
    bool has_sender = false;     // the server took the sender, so that it was there, and hung up then
    bool has_no_way = false;     // there was no server
    bool is_not_theirs = false;  // for sure, as no connection came about
    bool in_doubt = false;
  };

  JournalledRun& run_;
  std::deque<Lost> in_a_row_;
  std::int64_t count_ = 0;
  std::int64_t left_ = 0;
};

}  // namespace quillcast::run
