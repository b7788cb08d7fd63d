#include "run/frozen/frozen_inputs.h"

#include <utility>

#include "account/account_message.h"
#include "platform/text.h"
#include "run/frozen/frozen_text.h"

namespace quillcast::run {

bool MailingInputs::IsTo(const recipients::RecipientGroup& other) const {
  return group_id != 0 ? group_id == other.id : platform::EqualsIgnoringAsciiCase(group, other.name);
}

Result<NewMailing> Freeze(const MailingInputs& inputs, RunJournal& journal) {
  const auto options = account::MessageOptionsOf(inputs.account, inputs.body_format);
  if (!options) return options.error();
  const auto files = KeepFiles(inputs.document, *options, journal);
  if (!files) return files.error();
  return NewMailing{inputs.document.subject, inputs.group, FrozenText({inputs, *files}), ContentsOf(*files)};
}

Result<ThawedInputs> Thaw(const NewMailing& mailing, RunJournal& journal) {
  auto frozen = ReadFrozenText(mailing.inputs, mailing.files);
  if (!frozen) return frozen.error();
  auto files = KeptFiles::Open(std::move(frozen->files), journal);
  if (!files) return files.error();
  return ThawedInputs{std::move(frozen->inputs), *std::move(files)};
}

}  // namespace quillcast::run
