// What is read of the journal at one moment, while others write into it.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "platform/sqlite.h"
#include "run/journal/journal_file.h"
#include "run/journal/mailing_tables.h"

namespace quillcast::run {

// A mailing's last run, where that has not ended, and whether somebody has it in hand.
struct LastRun {
  RunId id = 0;
  bool in_hand = false;
};

struct Seen {
  std::map<MailingId, LastRun> open;
  std::vector<MailingId> not_taken_in;  // whose run is lost, and told more than the file takes now
};

// Takes in what lost runs told last, and sees who goes on; before the look.
Result<Seen> SeeWhoGoesOn(platform::Database& database, const JournalPlace& place);
// Of a mailing that is read behind that.
bool GoesOn(const Seen& seen, const StoredMailing& mailing);

// One look at the file: what is read by it belongs together. Goes back at its end, there is nothing to keep. What could
// not be taken in is seen in it all the same.
class Look {
 public:
  static Result<Look> At(platform::Database& database, const JournalPlace& place,
                         const std::vector<MailingId>& not_taken_in);
  Look(Look&& other) noexcept : database_(std::exchange(other.database_, nullptr)) {}
  Look& operator=(Look&&) = delete;
  ~Look() {
    if (database_ != nullptr) IgnoreErrors(database_->Execute("ROLLBACK"));
  }

 private:
  explicit Look(platform::Database& database) : database_(&database) {}
  platform::Database* database_;
};

}  // namespace quillcast::run
