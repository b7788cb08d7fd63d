// The letters of a run, made before they are asked for: on a thread of their own, while others are sent.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "message/message_template.h"
#include "platform/result.h"
#include "recipients/recipient.h"
#include "run/journal/run_journal.h"
#include "run/pace/pace.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// A recipient's letter, or why there is none: it failed before any server was asked.
struct MadeLetter {
  std::unique_ptr<message::RenderedMessage> message;  // after a failure of no use but to be given back
  Domain domain{};                                    // of its envelope
  std::optional<smtp::Outcome> failure = {};
};

// Reads the run's list a little ahead of who is asked for, and keeps to its order. The thread makes nothing but
// letters: the journal, and all that is here, belong to whoever calls.
class LettersAhead {
 public:
  enum class On { kCallersThread, kOwnThread };
  // Both must outlive it. Where no thread is to be had, or is wanted, each letter is made when it is asked for.
  LettersAhead(JournalledRun& run, const message::MessageTemplate& message, On on);
  ~LettersAhead() { EndMaking(); }
  LettersAhead(const LettersAhead&) = delete;
  LettersAhead& operator=(const LettersAhead&) = delete;

  // As those of JournalledRun.
  Result<bool> Next(recipients::Recipient& recipient, std::int64_t& position);
  const Before& before() const { return given_->before; }

  // The letter of whom Next gave last, or of anybody else: then it is made now.
  MadeLetter Take(const recipients::Recipient& recipient, std::int64_t position);
  // When it is settled, for another one.
  void GiveBack(std::unique_ptr<message::RenderedMessage> message);

  // Nothing goes out for some time, and a letter says when it was made: those made ahead are made anew.
  void Forget();
  // No more letters are wanted; who is left in the list is still to be had.
  void EndMaking();

 private:
  enum class Stage : std::uint8_t { kNotWanted, kWanted, kIsBeingMade, kMade };
  struct Row {
    recipients::Recipient recipient;
    std::int64_t position = 0;
    Before before;
    Stage stage = Stage::kNotWanted;
    MadeLetter letter;
  };

  void ReadOn();
  void Want(std::size_t first);
  bool Withdraw(std::unique_lock<std::mutex>& lock, Row& row);
  std::unique_ptr<message::RenderedMessage> AMessage();
  MadeLetter Make(const recipients::Recipient& recipient, std::int64_t position,
                  std::unique_ptr<message::RenderedMessage> message) const;
  void MakeThem();

  JournalledRun& run_;
  const message::MessageTemplate& message_;
  std::deque<std::unique_ptr<Row>> list_;   // that Next has not given
  std::unique_ptr<Row> given_;              // last
  std::vector<std::unique_ptr<Row>> free_;  // to be used again
  std::optional<Result<bool>> end_;         // what the list said instead of one more

  std::mutex mutex_;                 // of the rest, and of the stages and letters of the rows that are wanted
  std::condition_variable changed_;  // for the thread
  std::condition_variable made_;     // for whoever waits for what is being made
  std::deque<Row*> wanted_;
  std::size_t octets_ = 0;  // in letters that are made and not taken
  std::vector<std::unique_ptr<message::RenderedMessage>>
      messages_;  // free; the last used last, so that few are kept warm
  bool ends_ = false;
  std::optional<std::thread> thread_;
};

}  // namespace quillcast::run
