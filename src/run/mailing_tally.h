// What the results of a mailing come to, counted by what a person asks about them.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "run/journal/run_journal.h"

namespace quillcast::run {

// Of some of the recipients.
struct Tally {
  std::int64_t sent = 0;
  std::int64_t others = 0;
  std::int64_t all() const { return sent + others; }
};

struct NamedTally {
  std::string name;
  Tally tally;
  std::string example;  // of a reply: the words of the first such
};

// Counts recipients that were tried, one by one. Its memory is bounded: beyond kMostNames different domains or replies
// further ones count together. A reply goes by its digits; where there was none, by the text of our code.
class MailingTally {
 public:
  static constexpr std::size_t kMostNames = 20'000;
  static constexpr std::size_t kMostColumns = 48;

  // `first` and `last`: the times between which results came.
  MailingTally(std::chrono::sys_seconds first, std::chrono::sys_seconds last);
  void Add(const JournalRow& row);

  // The largest, largest first, and what is left together as "others".
  std::vector<NamedTally> Domains(std::size_t most) const;
  std::vector<NamedTally> Replies(std::size_t most) const;
  // In equal steps from `first` on; `step` seconds each.
  const std::vector<Tally>& columns() const { return columns_; }
  std::chrono::seconds step() const { return step_; }

 private:
  struct Counted {
    Tally tally;
    std::string example;
  };
  using Names = std::unordered_map<std::string, Counted>;
  static Counted& Count(Names& names, std::string name, bool is_sent);
  static std::vector<NamedTally> Largest(const Names& names, std::size_t most);

  const std::chrono::sys_seconds first_;
  std::chrono::seconds step_;
  std::vector<Tally> columns_;
  Names domains_;
  Names replies_;
};

}  // namespace quillcast::run
