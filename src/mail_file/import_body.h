// The body of a message file as a document that a person goes on writing: its page without scripts, forms and
// references to elsewhere, its embedded pictures beside it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "mail_file/mail_message.h"
#include "platform/clock.h"

namespace quillcast::mail_file {

struct ImportedBody {
  std::string subject;
  std::string html;              // in UTF-8
  std::filesystem::path folder;  // where its relative references start; empty for a body without a page of its own
  std::vector<Error> failures;   // pictures that could not be written
};

// A body without HTML is its text with "<" and "&" escaped and each CR as "<br>", and comes into no folder. Any other
// is written into a working folder in `temporary`, and that is copied, over what is there, to a folder of its name in
// `target`. Errors: kBadData for a message without a body that can be
// read and for a page that the editor cannot take, kTryAgain after a cancel; nothing is in `target`
// then.
Result<ImportedBody> ImportBody(const MailMessage& message, const std::filesystem::path& target,
                                const std::filesystem::path& temporary, const platform::Clock& clock,
                                const platform::CancelToken* cancel);

}  // namespace quillcast::mail_file
