// A mailing in the journal of a profile, as a program left it that was killed in its midst.
#pragma once

#include "platform/cancel.h"
#include "platform/clock.h"
#include "run/frozen/frozen_inputs.h"
#include "run/kept_runs.h"
#include "support/fake_rows.h"

namespace quillcast::test {

// Of the recipients the first was sent, the second refused, the third deferred, which was to be tried again where the
// run had retries, and the fourth in flight.
inline Result<void> LeaveCutOff(const profile::Folders& folders, const std::string& group, bool has_retries = false,
                                int recipients = 5, const std::string& pace = {}) {
  static const platform::SystemClock clock;
  static const platform::CancelToken none;
  const auto journal = run::OpenJournal(folders, clock, none);
  if (!journal) return journal.error();
  run::MailingInputs inputs;
  inputs.document.subject = "Hello";
  inputs.document.html = "<p>Dear reader</p>";
  inputs.account.Set(account::AccountKey::kName, "Ada");
  inputs.account.Set(account::AccountKey::kEmail, "ada@example.org");
  inputs.group = group;
  const auto mailing = run::Freeze(inputs, **journal);
  if (!mailing) return mailing.error();
  std::vector<std::string> addresses;
  for (int n = 1; n <= recipients; ++n) addresses.push_back(FakeRows::AddressAt(n));
  FakeRows rows(addresses);
  const auto run = (*journal)->Begin(*mailing, rows, {}, {"11-27-2026_08-00-00_Hello", pace});
  if (!run) return run.error();
  recipients::Recipient recipient;
  std::int64_t position = 0;
  for (int n = 0; n < 4; ++n) {
    if (const auto row = (*run)->Next(recipient, position); !row) return row.error();
    (*run)->GoesOut(position);
  }
  (*run)->Settled(1, {smtp::State::kSent, smtp::ResultCode::kSuccess, {250, "2.0.0", "taken"}, {}});
  (*run)->Settled(2, {smtp::State::kRefused, smtp::ResultCode::kRecipientRefused, {550, "5.1.1", "nobody"}, {}});
  (*run)->Settled(3, {smtp::State::kDeferred, smtp::ResultCode::kRecipientRefused, {451, "4.2.0", "later"}, {}});
  if (has_retries) (*run)->IsTriedAgain(3, 1);
  return (*run)->Record();
}

}  // namespace quillcast::test
