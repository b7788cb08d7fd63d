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

Error NoSuchRecipient(std::string_view address, std::string_view group);

// Shows how far a change is, on a terminal.
recipients::OnProgress ShowProgress(Context& context);

// Every field of the list that was asked for, also the empty ones: programs look for fixed names.
nlohmann::ordered_json RecipientObject(const recipients::Recipient& recipient, bool all_fields);
// `group` where the list is of several groups.
void ShowRecipient(Context& context, const recipients::Recipient& recipient, bool all_fields,
                   std::string_view group = {});

// Whether the rest of a list is still to be shown: nobody cancelled it, and somebody reads.
bool IsWanted(const Context& context);
// kTryAgain for a list that was cancelled, so that nobody takes what was shown for the whole.
Result<void> EndOfList(const Context& context);

// Those whose addresses were in the other group already.
void TellDuplicates(Context& context, const recipients::MoveOutcome& outcome);

// The addresses of a command, or with "-" as the only one those that stand on standard input, one on each line before
// the first tab: what `find` and `recipient list` write. kNoInput when there is none, kTryAgain after a cancel.
Result<std::vector<std::string>> AddressesOf(const Context& context, const std::vector<std::string>& arguments);

}  // namespace quillcast::cli
