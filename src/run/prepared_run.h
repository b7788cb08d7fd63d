// A run that is ready to go: one message, whom it goes to and the account it goes from, and the questions that are
// asked of it before, during and instead of sending. Window, command, preview and proof all begin here.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "account/account_settings.h"
#include "account/shown_route.h"
#include "document/message_document.h"
#include "message/message_template.h"
#include "message/related_pictures.h"
#include "platform/prompts.h"
#include "platform/result.h"
#include "recipients/recipient_store.h"
#include "run/carrier.h"
#include "run/dry_run.h"
#include "run/frozen/frozen_inputs.h"
#include "run/frozen/frozen_pace.h"
#include "run/journal/run_journal.h"
#include "run/message_export.h"
#include "run/message_look.h"
#include "run/message_preview.h"
#include "run/pace/pace_rules.h"
#include "run/pre_send_checks.h"
#include "run/recipient_view.h"
#include "run/run_place.h"
#include "run/sending_run.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// Whom a run goes to: a group as it was when it was chosen.
struct ChosenGroup {
  recipients::RecipientGroup group;  // id 0 where there is none of this name
  std::int64_t recipients = 0;
};

// A mailing that a run goes on with, and whom it is for.
struct GoingOn {
  std::unique_ptr<RunJournal> journal;
  MailingEntry mailing;
  RunKind kind = RunKind::kResume;
  RecipientChoice choice;
  std::int64_t recipients = 0;          // that are chosen
  ThawedInputs frozen;                  // its files are the journal's
  std::optional<FrozenPace> pace = {};  // of its last run
  std::optional<PaceTexts> began_at;    // the account's, as its first run of which that is known found it
};

// The account is read, and the message compiled, at the first question that needs it, and is then the same for all. The
// group's rows are read at each question as they are then; Run makes a copy of them, which alone decides whom it goes
// to. It belongs to one thread.
class PreparedRun {
 public:
  PreparedRun(document::MessageDocument document, ChosenGroup group, const RunPlace& place);
  PreparedRun(GoingOn going_on, const RunPlace& place);

  const document::MessageDocument& document() const { return document_; }
  const ChosenGroup& group() const { return group_; }
  // Fails where the settings cannot be read.
  Result<const account::AccountSettings*> Account();
  // Fails as Account does, and with kNotConfigured for an account that no message can be made with. Files that cannot
  // be read do not fail it: see MessageTemplate::trouble.
  Result<const message::MessageTemplate*> Message();

  // Holds it to the way that the person was shown: where the account leads another it fails as account::CheckRoute
  // does.
  void GoOnlyOver(account::Route route) { route_ = std::move(route); }

  // How fast it goes: as the account says now, and where these say something, by them; of one that goes on, between the
  // two, as the options of its last run said. Fails with kUsage for what says nothing of the kind, with kNotConfigured
  // where it is the account's, which it names, and as Account does.
  void Ask(PaceTexts pace) { pace_ = std::move(pace); }
  Result<RunPace> Pace();
  // Of one that goes on, with what pace and retries, and when it begins; nothing where there are none.
  Result<std::optional<Sentence>> PaceInWords();

  // Before it goes: what must hold (then CheckBeforeSending), the pictures that go along and those to be asked about
  // (none while the account describes no message; the answer then goes to AnswerAboutPictures), and what the person may
  // not have meant. The last reads the whole group, and asks the server what it offers where it is to.
  // Messages that are written ask no server, so all that they need of the account is found missing as they are made.
  Result<SendingFacts> Facts(Delivery delivery = Delivery::kSent);
  Result<message::RelatedPictures> LookForPictures();
  void AnswerAboutPictures(const std::vector<std::filesystem::path>& files, bool take);
  enum class Server { kIsAsked, kIsLeftAlone };
  Result<MessageLook> LookOver(Server server);

  // Its list: whom a place of it stands for, who has an address (the first for an empty one), and whom a part of it
  // begins and ends with. kUsage where there is nobody.
  Result<recipients::Recipient> RecipientAt(std::int64_t position) const;
  Result<recipients::Recipient> RecipientWith(std::string_view address) const;
  std::string EndsOf(const PartialRange& range) const;

  // One message by itself: as its recipient reads it, or with its tags; as it goes out (addressed to `send_to` where
  // that is given), or handed over; and one that keeps its tags, in the preview's files or in one of the person's
  // choice. A view shows the parts that go
  // out; where the account describes no message, those that the document asks for.
  Result<RecipientView> View(std::int64_t position);
  Result<RecipientView> ViewOfTags();
  Result<void> Render(const recipients::Recipient& recipient, std::string_view send_to, message::RenderedMessage& out);
  Result<smtp::Outcome> Send(message::RenderedMessage& message, const std::function<void(std::string_view)>& log_line);
  // Sends the message of the recipient at this place to the account's own address: a sentence on what became of it.
  Result<Sentence> SendToMyself(std::int64_t position);
  Result<Preview> WritePreview();
  Result<Exported> Export(const ExportTarget& target);

  // Of one that goes on: what is other by now than it was when the mailing began.
  Result<std::vector<Sentence>> WhatChangedSince();

  // All of them, or those of a range: made and dropped, or sent. Run fails, with nothing sent, when the account cannot
  // be used, the report cannot be created or the journal cannot be kept; everything later is in the report, the
  // listener's results and the summary. With a carrier it goes there, and the account's server is left alone; what is
  // written into files is not in the journal.
  Result<Composed> Compose(const std::optional<PartialRange>& range);
  Result<RunSummary> Run(const std::optional<PartialRange>& range, RunListener& listener);
  Result<RunSummary> Run(const std::optional<PartialRange>& range, RunListener& listener, Carrier& carrier);

 private:
  Result<const message::MessageOptions*> Options();
  Result<message::Parts> Parts();
  Result<recipients::RecipientCursor> Rows() const;
  Result<RunSummary> RunOver(Carrier& carrier, const std::optional<PartialRange>& range, RunListener& listener,
                             const BeginRun& begin, Turns* turns);
  bool WayWasThere() const;
  PaceTexts PaceOptions() const;
  Result<PaceTexts> TextsOfPace();
  Result<std::string> PaceToFreeze();
  Result<Turns> TurnsOf(RunListener& listener);
  Result<RunSummary> RunJournalled(Carrier& carrier, const std::optional<PartialRange>& range, RunListener& listener);
  Result<RunSummary> RunOn(Carrier& carrier, RunListener& listener);
  Result<std::unique_ptr<recipients::RowSource>> RowsForRun(recipients::Reading reading) const;
  Result<std::unique_ptr<recipients::RowSource>> RowsForLeft() const;
  Result<std::unique_ptr<recipients::RowSource>> RowsOf(const recipients::RecipientStore& store,
                                                        recipients::Reading reading) const;
  std::optional<Moment> BeginOfBefore() const;
  void CompileFrom(const message::FileSource& files, const message::MessageOptions& options);

  std::optional<GoingOn> going_on_;  // first: the document and the group are of its mailing
  document::MessageDocument document_;
  ChosenGroup group_;
  RunPlace place_;
  std::optional<account::Route> route_;  // that it is held to
  PaceTexts pace_;
  std::optional<account::AccountSettings> account_;
  std::optional<message::MessageOptions> options_;
  std::string body_format_;  // that they were made with
  std::unique_ptr<message::MessageTemplate> message_;
};

// The run of this document to the group of this name; see ChosenGroup for one that is not there. Fails where the store
// cannot be read.
Result<PreparedRun> Prepare(document::MessageDocument document, std::string_view group, const RunPlace& place);
// The same to a group that was chosen before.
PreparedRun Prepare(document::MessageDocument document, ChosenGroup group, const RunPlace& place);
// One that goes on with the mailing of this run, to those of its recipients: with the message and the list as
// they were when it began, by way of the account as it is now. Fails as the journal and Thaw do.
Result<PreparedRun> PrepareToGoOn(RunId run, RunKind kind, const RecipientChoice& choice, const RunPlace& place);

}  // namespace quillcast::run
