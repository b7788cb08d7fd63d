// What a mailing is made of, frozen as it was when its first run began and thawed for the runs that go on with it:
// every message is then the same, though the document, its files or the account have changed or are gone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "account/account_settings.h"
#include "document/message_document.h"
#include "platform/result.h"
#include "recipients/recipient.h"
#include "recipients/row_source.h"
#include "run/frozen/frozen_files.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

struct MailingInputs {
  document::MessageDocument document;
  account::AccountSettings account;
  std::string body_format;  // see account::LoadBodyFormat
  std::string group;
  std::int64_t recipients = 0;  // in the group
  std::optional<recipients::PartialRange> range;
  std::int64_t group_id = 0;  // it may have another name by now; 0 of an earlier version, which did not keep it

  // Whether that is the group.
  bool IsTo(const recipients::RecipientGroup& other) const;
};

// For RunJournal::Begin. Of the account nothing is kept that says how to connect, and so no secret. Fails with
// kNotConfigured for an account that no message can be made with, and as the journal does. Files that cannot be read do
// not fail it: they are in every later message what they are now.
Result<NewMailing> Freeze(const MailingInputs& inputs, RunJournal& journal);

// Messages are made of the document and what MessageOptionsOf the account and the body format gives, with the files
// from here; the first run's too, so that nothing can change between the two. The account has no more than was frozen,
// so account::WithMessageOf is what letters travel by.
struct ThawedInputs {
  MailingInputs inputs;
  KeptFiles files;  // the journal must outlive it
};

// Errors: kBadData for what Freeze did not write, kUnavailable for what a newer version of the program did, and those
// of the journal where it has lost a file.
Result<ThawedInputs> Thaw(const NewMailing& mailing, RunJournal& journal);

}  // namespace quillcast::run
