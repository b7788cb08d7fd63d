// The questions and notes of the commands around sending, at the terminal.
#pragma once

#include <string>
#include <vector>

#include "cli/context.h"
#include "cli/document_options.h"
#include "platform/result.h"
#include "run/prepared_run.h"

namespace quillcast::cli {

// Where this command's runs work. Both must live as long as what is prepared there.
run::RunPlace PlaceOf(const Context& context, const profile::Folders& folders);

// The run that these options describe. `folders` must live as long.
Result<run::PreparedRun> PrepareRun(Context& context, const profile::Folders& folders, const DocumentOptions& options,
                                    const std::string& group);

// The same to nobody, for what is made of the message alone.
Result<run::PreparedRun> PrepareRun(Context& context, const profile::Folders& folders, const DocumentOptions& options,
                                    run::ChosenGroup group);

// Asks before a locked file is written. 0 when it may be, else the exit code.
int AskToWrite(Context& context, const std::string& file);

// The checks and questions before sending, or writing. 0 when the run may start, else the exit code.
int AskBeforeSending(Context& context, run::PreparedRun& prepared, run::Delivery delivery);

// What to do about pictures that the document names where it may not take them from.
enum class ForeignPictures { kAskAbout, kLeaveOut };

// Asks about them; --yes is no answer, for it was given before anybody knew of them. Fails with kNotPermitted when
// there is nobody to ask, or when nothing is to be sent.
Result<void> SettlePictures(Context& context, ForeignPictures choice, run::PreparedRun& prepared);

// Looks the group over and tells, on standard error, what the person may not have meant; of the sender's domain, unless
// `is_domain_told` already. Gives what was told.
Result<std::vector<Sentence>> TellFindings(Context& context, run::PreparedRun& prepared,
                                           run::PreparedRun::Server server, bool is_domain_told);

}  // namespace quillcast::cli
