// Both ends of a run: a carrier that takes letters as the client does, a journal, and a listener that holds them
// against each other.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file.h"
#include "platform/text.h"
#include "run/journal/unjournalled_run.h"
#include "run/sending_run.h"
#include "support/fake_rows.h"

namespace quillcast::run {

using platform::Stop;
using smtp::State;
using test::FakeRows;

// What becomes of each recipient, a letter each: 's'ent, 'r'efused, 'd'eferred, 't'oo fast, 'c'onnection lost before
// the sender, 'n'o connection, 'h'ung up at, 'u'nknown, or 'x' for an entry without an address, which no server is
// asked about.
using Fates = std::string;

inline std::vector<std::string> AddressesOf(const Fates& fates) {
  std::vector<std::string> addresses;
  for (const char fate : fates) {
    const auto address = FakeRows::AddressAt(std::ssize(addresses) + 1);
    addresses.push_back(fate == 'x' ? "nobody" : address);
  }
  return addresses;
}

inline std::int64_t PositionOf(std::string_view address) {
  return *platform::ParseWholeNumber(address.substr(1, address.find('@') - 1));
}

inline smtp::Outcome OutcomeOf(char fate) {
  if (fate == 's') return {.state = State::kSent, .code = smtp::ResultCode::kSuccess, .reply = {}, .reason = {}};
  if (fate == 'd') {
    return {.state = State::kDeferred,
            .code = smtp::ResultCode::kRecipientRefused,
            .reply = {451, "", "later"},
            .reason = {}};
  }
  if (fate == 't') {
    return {.state = State::kDeferred,
            .code = smtp::ResultCode::kSenderRefused,
            .reply = {451, "4.7.1", "slow down"},
            .reason = {}};
  }
  if (fate == 'c')
    return {.state = State::kFailed, .code = smtp::ResultCode::kConnectFailed, .reply = {}, .reason = "Nobody there."};
  if (fate == 'n') {
    smtp::Outcome outcome = OutcomeOf('c');
    outcome.no_way = true;
    return outcome;
  }
  if (fate == 'h') {
    return {.state = State::kFailed,
            .code = smtp::ResultCode::kConnectionLost,
            .reply = {},
            .reason = "It hung up.",
            .has_sender = true};
  }
  if (fate == 'u') return {.state = State::kUnknown, .code = smtp::ResultCode::kException, .reply = {}, .reason = {}};
  return {
      .state = State::kRefused, .code = smtp::ResultCode::kRecipientRefused, .reply = {550, "", "no"}, .reason = {}};
}

// What the runs of tests send, and from whom.
inline document::MessageDocument ALetter() {
  document::MessageDocument document;
  document.subject = "Hello";
  document.html = "<p>Dear $*MergeEmail*$</p>";
  return document;
}
inline message::MessageOptions FromAda() {
  message::MessageOptions options;
  options.sender_address = *smtp::Address::From("ada@example.org");
  return options;
}

// Takes letters as the client does: some in flight, told in the order taken, asking whether to go on after refusals.
class FakeCarrier final : public Carrier {
 public:
  FakeCarrier(Fates fates, std::size_t window, const platform::CancelToken& cancel)
      : fates_(std::move(fates)), window_(window), cancel_(cancel) {}

  std::function<void(int step)> at_step;  // before each taking and each result, counted from 1
  int asks_after = 0;                     // so many refusals in a row; 0 for never
  bool withdraws = false;                 // after a stop, what was taken and not begun
  Delivery kind = Delivery::kSent;
  std::optional<std::size_t> full_after;               // so many letters it takes no more
  std::vector<std::int64_t> carried;                   // who was handed over, in order
  std::function<void(std::int64_t)> is_out = {};       // called for each of them
  std::function<void(platform::Instant)> waits_until;  // called where nothing may go out before then
  std::map<std::int64_t, int> comes_back = {};         // how often the connection of each is lost before it is out
  smtp::Outcome why_back = smtp::Left();
  std::function<void(std::int64_t)> is_back = {};  // called each time, once that is recorded
  std::function<void()> has_none = {};             // called where there was none, before it is asked until when
  bool logs = false;                               // a line of the connection for each
  bool first_is_slow = false;                      // its outcome comes behind that of all others
  std::set<const smtp::MessageSource*> messages;   // those that were made at a time
  std::map<std::int64_t, Fates> then = {};         // of who is tried again: the last counts for all behind it

  Delivery delivery() const override { return kind; }
  std::optional<Error> trouble() const override {
    if (full_after != carried.size()) return {};
    return Error{Failure::kIo, "The disk is full.", "Free some of it."};
  }
  void Carry(smtp::JobSource& letters) override {
    std::deque<InFlight> in_flight;
    std::size_t undecided = 0;
    bool goes_on = true;
    int refused = 0;
    for (;;) {
      std::optional<platform::Instant> due;
      while (goes_on && undecided < window_ && !trouble()) {
        Step();
        InFlight* next = Next(letters, in_flight);
        if (next == nullptr && has_none) has_none();
        if (next == nullptr) due = letters.NextDue();
        if (next == nullptr) break;
        letters.GoesOut(*next->job);
        messages.insert(next->job->message);
        ++undecided;
      }
      is_kept_ = letters.CaughtUp() && is_kept_;
      if (in_flight.empty() && !due) break;
      Step();
      if (undecided == 0 && (in_flight.empty() || !in_flight.front().outcome)) {
        waits_until(*due);
        continue;
      }
      if (undecided > 0) {
        const auto is_undecided = [](const InFlight& each) { return !each.outcome && !each.is_back; };
        const auto from = in_flight.begin() + (first_is_slow && undecided > 1 ? 1 : 0);
        InFlight& next = *std::find_if(from, in_flight.end(), is_undecided);
        if (comes_back[next.job->position]-- > 0) {
          --undecided;
          ComeBack(letters, next);
          continue;
        }
        letters.Waiting();
        next.outcome = Deliver(*next.job);
        letters.Decided(*next.job, *next.outcome);
        --undecided;
      }
      if (!in_flight.front().outcome) continue;
      const auto [job, outcome] = std::pair(in_flight.front().job, *in_flight.front().outcome);
      if (logs) letters.LogLine("S: " + std::to_string(job->position));
      letters.Finished(*job, outcome);
      in_flight.pop_front();
      refused = outcome.state == State::kRefused ? refused + 1 : 0;
      if (refused == asks_after && asks_after > 0 && !letters.GoOn(outcome, refused)) goes_on = false;
    }
  }

 private:
  struct InFlight {
    smtp::Job* job = nullptr;
    std::optional<smtp::Outcome> outcome = {};
    bool is_back = false;
  };
  // One that came back and may go, or a new one.
  static InFlight* Next(smtp::JobSource& letters, std::deque<InFlight>& in_flight) {
    for (InFlight& each : in_flight) {
      if (!each.is_back) continue;
      const smtp::Passage passage = letters.MayGo(*each.job);
      if (passage == smtp::Passage::kAllHeld) return nullptr;
      each.is_back = passage != smtp::Passage::kFree;
      if (!each.is_back) return &each;
    }
    smtp::Job* job = letters.NextJob();
    return job == nullptr ? nullptr : &in_flight.emplace_back(InFlight{job});
  }
  void Step() {
    ++step_;
    if (at_step) at_step(step_);
  }
  void ComeBack(smtp::JobSource& letters, InFlight& lost) {
    lost.is_back = true;
    letters.ComesBack(*lost.job, why_back);
    is_kept_ = letters.CaughtUp() && is_kept_;
    if (is_back) is_back(lost.job->position);
  }
  smtp::Outcome Deliver(const smtp::Job& job) {
    if (cancel_.Requested() == Stop::kAbandon)
      return {.state = State::kFailed, .code = smtp::ResultCode::kCancelled, .reply = {}, .reason = {}};
    if (!is_kept_ || (withdraws && cancel_.Requested() != Stop::kNone)) return smtp::Left();
    carried.push_back(PositionOf(job.envelope.recipient.text()));
    EXPECT_EQ(carried.back(), job.position);
    is_out(carried.back());
    const auto tries = static_cast<std::size_t>(std::ranges::count(carried, job.position));
    if (tries > 1) return OutcomeOf(then[job.position].at(std::min(tries - 2, then[job.position].size() - 1)));
    return OutcomeOf(fates_[static_cast<std::size_t>(carried.back() - 1)]);
  }

  const Fates fates_;
  const std::size_t window_;
  const platform::CancelToken& cancel_;
  int step_ = 0;
  bool is_kept_ = true;  // what was told of those on their way
};

// What a journal keeps of a run: whatever happens, it is true of everybody whose message was out.
struct Kept {
  std::map<std::int64_t, ResultState> states;  // of those who were recorded
  int fails_at = 0;                            // the Record that fails, as all behind it do; 0 for none
  bool ended = false;
  bool shown = false;                      // all that was told
  std::set<std::int64_t> unreadable = {};  // the second time
  std::map<std::int64_t, int> tries = {};  // of those who are to be tried again; before the run, 0: unknown
};

class FakeRun final : public JournalledRun {
 public:
  FakeRun(std::unique_ptr<recipients::RowSource> rows, const std::optional<PartialRange>& range, Kept& kept)
      : rows_(std::move(rows), range), kept_(kept) {}

  RunId id() const override { return 1; }
  std::int64_t size() const override { return rows_.size(); }
  std::int64_t list_size() const override { return rows_.list_size(); }
  Result<bool> Next(recipients::Recipient& recipient, std::int64_t& position) override {
    EXPECT_FALSE(std::exchange(is_at_end_, false)) << "asked behind the end";
    const auto more = rows_.Next(recipient, position);
    is_at_end_ = !more || !*more;
    if (more && *more) given_[position] = recipient;
    const auto before = kept_.tries.find(position);
    before_ = {};
    if (before != kept_.tries.end())
      before_ = {before->second == 0 ? ResultState::kUnknown : ResultState::kDeferred, before->second};
    return more;
  }
  Before before() const override { return before_; }
  Result<void> Again(std::int64_t position, recipients::Recipient& recipient) override {
    EXPECT_TRUE(given_.contains(position)) << "asked for again, and never given";
    if (kept_.unreadable.contains(position)) return Error{Failure::kBadData, "The journal is damaged.", ""};
    recipient = given_[position];
    return {};
  }
  void GoesOut(std::int64_t position) override {
    told_[position] = ResultState::kInFlight;
    kept_.shown = false;
  }
  void Settled(std::int64_t position, const smtp::Outcome& outcome) override {
    kept_.shown = false;
    auto& settled = settled_.try_emplace(position, ResultState::kNotTried).first->second;
    if (outcome.is_decided()) settled = StateOf(outcome.state);
    told_[position] = settled;
    if (outcome.is_decided()) kept_.tries.erase(position);
  }
  void IsTriedAgain(std::int64_t position, int tries) override {
    if (tries == 0) kept_.tries.erase(position);
    if (tries != 0) kept_.tries[position] = tries;
  }
  Result<void> Record() override {
    if (kept_.fails_at > 0 && ++records_ >= kept_.fails_at) return Error{Failure::kIo, "The journal is full.", ""};
    for (const auto& [position, state] : std::exchange(told_, {})) kept_.states[position] = state;
    return {};
  }
  void Show() override { kept_.shown = true; }
  Result<void> End() override {
    const auto recorded = Record();
    kept_.ended = static_cast<bool>(recorded);
    return recorded;
  }

 private:
  UnjournalledRun rows_;
  Kept& kept_;
  std::map<std::int64_t, ResultState> told_;
  std::map<std::int64_t, ResultState> settled_;  // what the last try came to
  std::map<std::int64_t, recipients::Recipient> given_;
  int records_ = 0;
  Before before_;
  bool is_at_end_ = false;
};

struct Told final : RunListener {
  std::vector<std::int64_t> order;  // everybody who was told of
  std::map<State, std::int64_t> results;
  std::map<std::int64_t, ResultState> states;
  std::string tries;  // each as it was told: "3d+ " deferred and tried again, "3s2 " sent at the second try
  std::vector<std::int64_t> sent;
  std::int64_t not_tried = 0;
  bool goes_on = true;
  int asked = 0;
  std::filesystem::path report;
  std::string report_when_asked;
  std::int64_t failed_when_asked = 0;
  std::vector<std::string> notes;
  std::vector<std::string> waits;  // what was waited for, once where it was told again
  std::int64_t total = 0;
  std::function<bool()> is_held;   // nobody holds it where there is none
  std::vector<std::int64_t> held;  // with so many under way, once where it was told again
  int let_go = 0;

  bool IsHeld() override { return is_held && is_held(); }
  void Held(std::int64_t under_way) override {
    if (held.empty() || held.back() != under_way) held.push_back(under_way);
  }
  void LetGo() override { ++let_go; }
  void Began(const std::filesystem::path& file) override { report = file; }
  void ReportLine(std::string_view) override {}
  void Finished(const RecipientResult& result) override {
    EXPECT_EQ(not_tried, 0) << "results come before those who were not tried";
    order.push_back(result.position);
    ++results[result.outcome.state];
    states[result.position] = StateOf(result.outcome.state);
    if (result.outcome.state == State::kSent) sent.push_back(result.position);
    tries += std::to_string(result.position) + *smtp::Name(result.outcome.state);
    tries += (result.tries > 1 ? std::to_string(result.tries) : "") + (result.again ? "+ " : " ");
  }
  void Progress(std::int64_t, std::int64_t of, std::uint64_t, std::uint64_t) override { total = of; }
  bool GoOn(const smtp::Outcome&, int, std::int64_t) override {
    ++asked;
    report_when_asked = platform::ReadFile(report, 1 << 20).ValueOr("");
    failed_when_asked = static_cast<std::int64_t>(order.size() - sent.size());
    return goes_on;
  }
  void NotTried(std::int64_t position, const std::string&, ResultState) override {
    order.push_back(position);
    ++not_tried;
  }
  void Waits(const Sentence& why, Moment) override {
    if (waits.empty() || waits.back() != why.InEnglish()) waits.push_back(why.InEnglish());
  }
  void Note(const Sentence& sentence) override { notes.push_back(sentence.InEnglish()); }
  std::int64_t NotesOn(std::string_view start) const {
    return std::count_if(notes.begin(), notes.end(), [&](const auto& note) { return note.starts_with(start); });
  }
};

inline std::int64_t Count(std::string_view text, std::string_view part) {
  std::int64_t count = 0;
  for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

inline std::vector<std::int64_t> Places(std::int64_t first, std::int64_t last) {
  std::vector<std::int64_t> places;
  for (auto place = first; place <= last; ++place) places.push_back(place);
  return places;
}

}  // namespace quillcast::run
