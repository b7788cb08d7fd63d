#include "run/journal/journal_look.h"

#include "run/journal/mailing_lock.h"
#include "run/journal/recent_log.h"

namespace quillcast::run {
namespace {

Result<void> AskWhoIsInHand(Seen& seen, const JournalPlace& place) {
  for (auto& [mailing, last] : seen.open) {
    const auto in_hand = IsInHand(place.Locks(), mailing);
    if (!in_hand) return in_hand.error();
    last.in_hand |= *in_hand;
  }
  return {};
}

// Takes in, in a transaction that is not to be committed, what these mailings' lost runs told last.
Result<void> BeginWith(platform::Database& database, const JournalPlace& place,
                       const std::vector<MailingId>& not_taken_in) {
  if (auto begun = database.Execute("BEGIN IMMEDIATE"); !begun) return begun;
  for (const MailingId mailing : not_taken_in) {
    const auto stored = ReadMailing(database, mailing);
    if (!stored) continue;  // whoever reads it says so
    if (auto taken = TakeRecentIn(database, place, *stored); !taken) return taken;
  }
  return {};
}

}  // namespace

// A run has its lock from before it can be seen until after its end can be. So who is asked for first, and read then,
// is known: the one that was seen before and whose lock was free has ended by the time it is read, or its program is
// gone; one that was not seen before has only just begun.
Result<Seen> SeeWhoGoesOn(platform::Database& database, const JournalPlace& place) {
  Seen seen;
  auto open = database.Prepare(
      "SELECT mailing, id, ended FROM runs AS r WHERE number = (SELECT max(number) FROM runs WHERE mailing = "
      "r.mailing) "
      "AND ended IS NULL");
  if (!open) return open.error();
  for (;;) {
    const auto row = open->Step();
    if (!row) return row.error();
    if (!*row) break;
    seen.open[open->Int(0)].id = open->Int(1);
  }
  if (auto asked = AskWhoIsInHand(seen, place); !asked) return asked.error();
  auto not_taken_in = TakeAllRecentIn(database, place);
  if (!not_taken_in) return not_taken_in.error();
  seen.not_taken_in = *std::move(not_taken_in);
  // Of a mailing that was taken up meanwhile, nothing was taken in.
  if (auto asked = AskWhoIsInHand(seen, place); !asked) return asked.error();
  return seen;
}

bool GoesOn(const Seen& seen, const StoredMailing& mailing) {
  const RunEntry& last = mailing.runs.back().entry;
  if (last.ended) return false;
  const auto known = seen.open.find(mailing.entry.id);
  return known == seen.open.end() || known->second.id != last.id || known->second.in_hand;
}

Result<Look> Look::At(platform::Database& database, const JournalPlace& place,
                      const std::vector<MailingId>& not_taken_in) {
  if (!not_taken_in.empty()) {
    const auto begun = BeginWith(database, place, not_taken_in);
    if (begun) return Look(database);
    IgnoreErrors(database.Execute("ROLLBACK"));
    if (begun.error().failure == Failure::kTryAgain) return begun.error();
    // The file may only be read, or its disk is full to the last octet: those are in doubt.
  }
  if (auto begun = database.Execute("BEGIN"); !begun) return begun.error();
  return Look(database);
}

}  // namespace quillcast::run
