// The chosen ones of a mailing by their number among them: read a page at a time as they are asked for, so that a
// million cost what a screenful does.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "profile/folders.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// What is shown of one of them.
struct ChosenRow {
  std::int64_t position = 0;
  std::string address;
  std::string standing;  // as StandingOf has it
  std::string why;  // what the server said at the last try, what that means, our reason; empty where nothing is known
};

class ChosenPages {
 public:
  static constexpr std::int64_t kPage = 200;  // rows

  ChosenPages(const profile::Folders& folders, const platform::Clock& clock) : folders_(folders), clock_(clock) {}

  // What was read is forgotten.
  void Choose(MailingId mailing, RecipientChoice choice);
  // The one with so many before it; nothing where it is not there any more. Fails as the journal does, and goes on
  // failing until others are chosen.
  Result<std::optional<ChosenRow>> At(std::int64_t number);
  // How many pages were read since.
  int reads() const { return reads_; }

 private:
  struct Page {
    std::int64_t first = 0;
    std::vector<ChosenRow> rows;
  };
  Result<Page> Read(std::int64_t first);

  const profile::Folders& folders_;
  const platform::Clock& clock_;
  MailingId mailing_ = 0;
  RecipientChoice choice_;
  std::deque<Page> pages_;  // the one read last in front
  std::optional<Error> trouble_;
  int reads_ = 0;
};

}  // namespace quillcast::run
