#include "cli/send_steps.h"

#include <utility>

#include "message/related_pictures.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/pre_send_checks.h"

namespace quillcast::cli {

namespace {

// Where it is seen to at the terminal.
const char* RemedyOf(run::SendControl control) {
  switch (control) {
    case run::SendControl::kAccount:
      return "Fill in the account with: quillcast account set --help";
    case run::SendControl::kGroup:
      return "quillcast group list shows the groups; quillcast group new makes one.";
    case run::SendControl::kSubject:
      return "--subject gives another one.";
    case run::SendControl::kBody:
      break;
  }
  return "--body and --text give one.";
}

}  // namespace

run::RunPlace PlaceOf(const Context& context, const profile::Folders& folders) {
  return {folders, context.clock, context.entropy, context.cancel, context.keyring};
}

Result<run::PreparedRun> PrepareRun(Context& context, const profile::Folders& folders, const DocumentOptions& options,
                                    const std::string& group) {
  auto document = DocumentFrom(options, folders, profile::SettingsStore(folders.settings), context.prompts);
  if (!document) return document.error();
  return run::Prepare(std::move(*document), group, PlaceOf(context, folders));
}

Result<run::PreparedRun> PrepareRun(Context& context, const profile::Folders& folders, const DocumentOptions& options,
                                    run::ChosenGroup group) {
  auto document = DocumentFrom(options, folders, profile::SettingsStore(folders.settings), context.prompts);
  if (!document) return document.error();
  return run::Prepare(std::move(*document), std::move(group), PlaceOf(context, folders));
}

int AskToWrite(Context& context, const std::string& file) {
  const auto may_write = platform::MayWriteTo(file, context.Folders().OwnFiles(), context.prompts);
  if (!may_write) return context.output.Fail(may_write.error());
  if (*may_write) return 0;
  return context.output.Fail({Failure::kNotPermitted, platform::LeftLocked(file),
                              "Name another file, or answer yes (--yes does) to have it unlocked."});
}

int AskBeforeSending(Context& context, run::PreparedRun& prepared, run::Delivery delivery) {
  const auto facts = prepared.Facts(delivery);
  if (!facts) return context.output.Fail(facts.error());
  const auto refused = run::CheckBeforeSending(*facts, context.prompts);
  if (!refused) return 0;
  context.output.Note(RemedyOf(refused->control));
  return ExitCode(refused->failure);
}

Result<void> SettlePictures(Context& context, ForeignPictures choice, run::PreparedRun& prepared) {
  const auto pictures = prepared.LookForPictures();
  if (!pictures) return pictures.error();
  const auto files = message::PicturesToAskFor(pictures->foreign);
  if (files.empty()) return {};
  bool take = false;
  if (choice == ForeignPictures::kAskAbout) {
    if (!context.may_ask || context.assume_yes) {
      return Error{Failure::kNotPermitted, message::NameForeign(files),
                   "--pictures-from DIR takes those in that folder along, --leave-pictures-out sends without them."};
    }
    const auto answer = context.prompts.AskOrCancel(message::PictureQuestion(files).InEnglish());
    if (answer == platform::Answer::kCancel) return Error{Failure::kNotPermitted, "Nothing was sent.", ""};
    take = answer == platform::Answer::kYes;
  }
  prepared.AnswerAboutPictures(files, take);
  return {};
}

Result<std::vector<Sentence>> TellFindings(Context& context, run::PreparedRun& prepared,
                                           run::PreparedRun::Server server, bool is_domain_told) {
  auto look = prepared.LookOver(server);
  if (!look) return look.error();
  auto told = std::move(look->along);
  if (look->before) told.push_back(*look->before);
  told.insert(told.end(), look->findings.begin(), look->findings.end());
  if (look->domain && !is_domain_told) told.push_back(*look->domain);
  for (const auto& sentence : told) context.output.Note("Note: " + sentence.InEnglish());
  if (!look->size.empty()) context.output.Note(look->size.InEnglish());
  return told;
}

}  // namespace quillcast::cli
