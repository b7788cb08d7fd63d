// The central operation: one personal message to each recipient of a group, reported as it goes. It knows neither where
// its rows come from nor how its letters travel.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "message/message_template.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/result.h"
#include "platform/sentence.h"
#include "recipients/recipient_store.h"
#include "recipients/row_source.h"
#include "run/carrier.h"
#include "run/history.h"
#include "run/journal/run_journal.h"
#include "run/pace/turns.h"
#include "run/retries.h"
#include "run/run_report.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// What became of one recipient, at one try.
struct RecipientResult {
  std::int64_t position = 0;  // 1-based place in the group's list
  std::string address;        // as stored
  smtp::Outcome outcome;
  int tries = 1;       // this one included
  bool again = false;  // one more is to follow, unless the run ends before
};

// Follows a run. Called on the thread that runs it. Each recipient of the range is told once, by Finished or NotTried,
// in the order of the list; but after a row that cannot be read nobody knows who comes behind it. Of somebody who is
// tried again Finished tells later once more, in place of what it told before.
class RunListener {
 public:
  virtual ~RunListener() = default;
  // The run has its place in the history: the file that its report grows in.
  virtual void Began(const std::filesystem::path& /*report*/) {}
  virtual void ReportLine(std::string_view line) = 0;
  virtual void Finished(const RecipientResult& result) = 0;
  // `done` of `total` messages; and of the current one `sent` of `size` octets. Called first when the total is known.
  virtual void Progress(std::int64_t done, std::int64_t total, std::uint64_t sent, std::uint64_t size) = 0;
  // Every further message would be refused as well: the sign-in, the sender or the session was, so many times in a row.
  // So many have got nothing by it till now, whom this run does not come to again. False ends the run.
  virtual bool GoOn(const smtp::Outcome& /*refusal*/, int /*times*/, std::int64_t /*left_out*/) { return true; }
  // Whether a person holds the run for now: nobody new is come to then. Asked before each, and twice a second
  // meanwhile.
  virtual bool IsHeld() { return false; }
  // For how long in all, this time included.
  virtual platform::Duration HeldFor() { return {}; }
  // So it is held, and so many messages are under way still, whose results are waited for; told anew as that changes,
  // and a few times a second. Then, once, that it goes on.
  virtual void Held(std::int64_t /*under_way*/) {}
  virtual void LetGo() {}
  // For each recipient who is left when a run has ended early, for whatever reason; kNotTried, or as a run before left
  // who was tried in it.
  virtual void NotTried(std::int64_t /*position*/, const std::string& /*address*/, ResultState /*stays*/) {}
  // Nothing goes out before then, unless something that is under way changes it; told a few times a second meanwhile.
  virtual void Waits(const Sentence& /*why*/, Moment /*until*/) {}
  // The same of the way to the server, which is lost and tried again then: nothing is under way.
  virtual void WayLost(const Sentence& why, Moment until) { Waits(why, until); }
  // A server answers again.
  virtual void WayFound() {}
  // Something about the whole run that the person should know: a whole sentence.
  virtual void Note(const Sentence& sentence) = 0;
};

struct RunSummary {
  std::int64_t sent = 0;        // or written, as the delivery says
  std::int64_t failed = 0;      // refused, deferred, failed or unknown, each by the last try
  std::int64_t not_tried = 0;   // after a cancel, or when the run had to stop: those at the end
  std::int64_t first_left = 0;  // the places in the list of the first and of the last of them, where they are known
  std::int64_t last = 0;        // and otherwise of the last whom the run was for
  std::string history = {};     // the base name
  RunId run = 0;                // in the journal; 0 for none
  bool cancelled = false;
  std::optional<Error> stopped = {};  // why the run ended before its last recipient, where it was not cancelled
  Delivery delivery = Delivery::kSent;
  std::int64_t retries_left = 0;    // of those who failed: they were to be tried again when the run ended
  std::int64_t unknown = 0;         // of those who failed: they may have got it
  std::int64_t unknown_before = 0;  // of the mailing, where the run went on with it and was not for them
  // Of those who failed: by the fault of the account, or of the way to its server. Whoever goes on goes on with them.
  std::int64_t not_their_doing = 0;
  std::int64_t skipped = 0;  // outside the part of the list that the run was for
  bool is_retry = false;     // whom it did not come to stays what the run before left

  // Whom a resume goes on with.
  std::int64_t left() const { return (is_retry ? 0 : not_tried) + retries_left + not_their_doing; }
  // Nobody is left, whatever became of each.
  bool reached_its_end() const { return !stopped && !cancelled && not_tried == 0 && retries_left == 0; }
  bool everybody_got_it() const { return reached_its_end() && failed == 0; }
};

// Whom a run is for, as they are frozen for it: it goes by that, and not by what was counted before. What becomes of
// them is told there. `history` is the base name of its files.
using BeginRun = std::function<Result<std::unique_ptr<JournalledRun>>(const std::string& history)>;
// The rows as they are now, from their beginning: to name those who are left where none could be frozen.
using OpenRows = std::function<Result<std::unique_ptr<recipients::RowSource>>()>;

// What a run is made of. All of it must outlive the run.
struct RunParts {
  const message::MessageTemplate& message;
  std::int64_t recipients = 0;        // in the group when it was chosen
  std::optional<PartialRange> range;  // the whole list where there is none; ends with the list where that is shorter
  BeginRun begin;
  OpenRows rows;
  Carrier& carrier;
  const platform::CancelToken& cancel;
  const platform::Clock& clock;
  Turns* turns = nullptr;  // none where nothing is sent
  RetryRules retries = {};
  bool slow_down = false;  // where the server asks for fewer messages
};

// Sends. The failures of one recipient never stop the run; a report or a journal that cannot be written any more does,
// because results would be lost. What is told is in the report too, and the summary counts it.
RunSummary SendLetters(const RunParts& parts, HistoryEntry entry, RunListener& listener);

}  // namespace quillcast::run
