// What the results of a mailing come to, counted by what a person asks about them.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "run/journal/run_journal.h"

namespace quillcast::run {

// What a person tells apart of what became of recipients: an unknown one may have got it, and to one who was not tried
// nothing was sent, so that neither is "not sent".
enum class Fate : std::uint8_t { kSent, kNotSent, kUnknown, kOnItsWay, kNotTried };
inline constexpr std::size_t kFates = 5;
Fate FateOf(ResultState state);

// Of some of the recipients.
struct Tally {
  std::array<std::int64_t, kFates> counts{};
  std::int64_t of(Fate fate) const { return counts[static_cast<std::size_t>(fate)]; }
  std::int64_t all() const;
  void Add(Fate fate) { ++counts[static_cast<std::size_t>(fate)]; }
  void Add(const Tally& other);
};

struct NamedTally {
  std::string name;
  Tally tally;
  std::string words;  // of a reply: those that all such have, with "…" for the others
};

// Counts recipients one by one. Its memory is bounded: beyond kMostNames different domains or replies further ones
// count together. A reply goes by its digits; where there was none, by what that means or by the text of our code.
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
  // In equal steps from `first` on, `step` seconds each; of who was tried.
  const std::vector<Tally>& columns() const { return columns_; }
  std::chrono::seconds step() const { return step_; }

 private:
  struct Counted {
    Tally tally;
    std::string words;
  };
  using Names = std::unordered_map<std::string, Counted>;
  static Counted& Count(Names& names, std::string name, Fate fate);
  static std::vector<NamedTally> Largest(const Names& names, std::size_t most);

  const std::chrono::sys_seconds first_;
  std::chrono::seconds step_;
  std::vector<Tally> columns_;
  Names domains_;
  Names replies_;
};

}  // namespace quillcast::run
