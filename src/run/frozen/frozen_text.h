// A mailing's inputs as the text that the journal keeps: JSON with a version.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "run/frozen/frozen_files.h"
#include "run/frozen/frozen_inputs.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

struct Frozen {
  MailingInputs inputs;
  FrozenFiles files;
};

// Octets survive that are no UTF-8, as in the names of files. Of the account it holds what the messages are made of and
// which server it named. The places that pictures may be taken from are not in it: what came of them is.
std::string FrozenText(const Frozen& frozen);

// `kept` are the files that the journal has of it. Errors: kBadData for what FrozenText does not write, kUnavailable
// for a version that is newer than this program.
Result<Frozen> ReadFrozenText(std::string_view text, const std::vector<KeptFile>& kept);
// Of a mailing in the journal. Fails as that does, too.
Result<Frozen> ReadFrozen(RunJournal& journal, MailingId mailing);

}  // namespace quillcast::run
