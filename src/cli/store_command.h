// What the commands for groups and recipients share.
#pragma once

#include <string>
#include <vector>

#include "cli/context.h"
#include "recipients/edit/edit.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/recipient_store.h"

namespace quillcast::cli {

// Gives an action the store of this user; a failure to make it ready ends the command, and so does one of the action.
template <typename Action>
int WithStore(Context& context, Action action) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  recipients::RecipientStore store(folders->Database(), {.cancel = &context.cancel});
  const Result<int> done = action(store);
  context.output.EndProgress();
  return done ? *done : context.output.Fail(done.error());
}

// Asks unless --yes was given. Without a Yes: an error that says that nothing was changed.
Result<void> AskFirst(Context& context, const Sentence& question);

// For a name that is none of the eighteen fields; `example` shows how one is written.
Error NoSuchField(std::string_view given, std::string_view example);
Error NoSuchRecipient(std::string_view address, std::string_view group);

// Shows how far a change is, on a terminal.
recipients::OnProgress ShowProgress(Context& context);

// Every field of the list that was asked for, also the empty ones: programs look for fixed names.
nlohmann::ordered_json AsObject(const recipients::Recipient& recipient, bool all_fields);
void ShowRecipient(Context& context, const recipients::Recipient& recipient, bool all_fields);

// Those whose addresses were in the other group already.
void TellDuplicates(Context& context, const recipients::MoveOutcome& outcome);

// The addresses of a command, or with "-" as the only one those that stand on standard input, one on each line before
// the first tab: what `find` and `recipient list` write. kNoInput when there is none.
Result<std::vector<std::string>> AddressesOf(const std::vector<std::string>& arguments);

}  // namespace quillcast::cli
