#include "support/request_message.h"

#include <functional>
#include <string>
#include <utility>

#include "account/account_message.h"
#include "document/message_document.h"
#include "mail_file/working_folder.h"
#include "message/message_template.h"
#include "platform/file.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/carrier.h"
#include "run/single_message.h"
#include "smtp/outcome_text.h"
#include "support/support_contact.h"

namespace quillcast::support {
namespace {

using smtp::Outcome;
using smtp::ResultCode;

Outcome Taken() {
  Outcome taken;
  taken.state = smtp::State::kSent;
  return taken;
}

Outcome Failed(ResultCode code, const Error& error) {
  return {.state = smtp::State::kFailed,
          .code = code,
          .reply = {},
          .reason = InOneLine(error),
          .whereabouts = smtp::Whereabouts::kNotOut};
}

// Those of the account, apart from what is the request's own; a setting that a request does not need keeps none back.
Result<message::MessageOptions> OptionsOf(const SupportRequest& request, account::AccountSettings account,
                                          const run::RunPlace& place) {
  using enum account::AccountKey;
  // What the person wrote is told as that, and not as the account's.
  if (const auto complaint = request.email.empty() ? std::nullopt : CheckEmail(request))
    return Error{Failure::kUsage, complaint->reason};
  account.Set(kName, request.name);
  account.Set(kEmail, request.email);
  account.Set(kCharSet, "Western European (Windows)");  // Windows-1252
  account.Set(kToField, std::string(account::RowOf(kToField).fallback));
  return account::LoadMessageOptions(place.Settings(), account);
}

// The report has a file of its own as long as the message is made.
document::MessageDocument DocumentOf(const SupportRequest& request, const RequestContents& contents,
                                     const std::filesystem::path& report) {
  document::MessageDocument document;
  document.subject = contents.subject;
  document.text = platform::ReplaceAll(contents.body, "\r\n", "\n");
  document.html = document::HtmlFromText(contents.body);
  document.format = document::Format::kText;
  document.priority = document::PriorityFrom(request.priority);
  document.attachments.Add(report.string());
  for (const auto& file : contents.files) document.attachments.Add(file.string());
  return document;
}

std::optional<Error> TooLarge(const document::MessageDocument& document) {
  const auto total = document::TotalOf(document.attachments);
  if (total.bytes <= kLargestRequest) return {};
  return Error{Failure::kBadData,
               Say("The files come to {}; a support request takes {}.", platform::HumanSize(total.bytes),
                   platform::HumanSize(kLargestRequest)),
               "Attach a smaller part of them, or leave some out."};
}

// Makes the message and gives it to `use`. What is wrong with a file of it is an outcome.
Result<Outcome> WithMessage(const SupportRequest& request, const RequestContents& contents,
                            const account::AccountSettings& account, const run::RunPlace& place,
                            const std::function<Result<Outcome>(message::RenderedMessage&)>& use) {
  auto options = OptionsOf(request, account, place);
  if (!options) return options.error();
  const auto folder = mail_file::WorkingFolder::Make(place.folders.temporary, place.clock);
  if (!folder) return folder.error();
  const auto report = folder->path() / kReportName;
  const auto written = platform::ReplaceFile(report, contents.report);
  if (!written) return written.error();
  const auto document = DocumentOf(request, contents, report);
  if (const auto large = TooLarge(document)) return Failed(ResultCode::kMessageRefused, *large);
  const message::MessageTemplate message(document, *std::move(options), place.folders.temporary, place.clock,
                                         place.entropy);
  if (const auto& trouble = message.trouble()) return Failed(trouble->code, trouble->error);
  message::RenderedMessage rendered;
  const auto made = run::RenderWithTags(message, contents.to, rendered);
  return made ? use(rendered) : made.error();
}

}  // namespace

Result<HiddenPassword> PasswordToHide(const run::RunPlace& place) {
  const auto account = account::AccountSettings::Load(place.Settings());
  if (!account) return account.error();
  if (!account->IsOn(account::AccountKey::kAuth)) return HiddenPassword();
  auto password = place.Secrets().PasswordOf(*account, place.cancel);
  if (password) return HiddenPassword{*std::move(password), {}};
  if (place.cancel.Requested() != platform::Stop::kNone) return password.error();
  return HiddenPassword{{},
                        Say("The password is not known, and so is not hidden where another setting repeats it. {}",
                            InOneLine(password.error()))};
}

Result<Outcome> SendRequest(const SupportRequest& request, const SystemFacts& facts, const smtp::Address& to,
                            const run::RunPlace& place, const std::optional<account::Route>& route) {
  const auto account = account::AccountSettings::Load(place.Settings());
  if (!account) return account.error();
  const auto leads_there = route ? account::CheckRoute(*account, *route) : Result<void>();
  if (!leads_there) return leads_there.error();
  const auto options = place.Secrets().SignInOptionsOf(*account, place.cancel);
  if (!options) {
    const bool was_cancelled = place.cancel.Requested() != platform::Stop::kNone;
    return was_cancelled ? Result<Outcome>(Failed(ResultCode::kCancelled, options.error())) : options.error();
  }
  const auto contents = ContentsOf(request, facts, to, place.folders, place.Settings(), options->password);
  if (!contents) return contents.error();
  return WithMessage(request, *contents, *account, place, [&](message::RenderedMessage& message) -> Result<Outcome> {
    run::SmtpCarrier carrier(*options, place.clock, place.cancel);
    return run::SendAlone(carrier, message, [](std::string_view) {});
  });
}

Result<Outcome> TryRequest(const SupportRequest& request, const RequestContents& contents, const run::RunPlace& place) {
  const auto account = account::AccountSettings::Load(place.Settings());
  if (!account) return account.error();
  return WithMessage(request, contents, *account, place,
                     [](message::RenderedMessage&) -> Result<Outcome> { return Taken(); });
}

Result<std::uint64_t> WriteRequest(const SupportRequest& request, const RequestContents& contents,
                                   const std::filesystem::path& file, const run::RunPlace& place) {
  const auto account = account::AccountSettings::Load(place.Settings());
  if (!account) return account.error();
  std::uint64_t octets = 0;
  const auto made =
      WithMessage(request, contents, *account, place, [&](message::RenderedMessage& message) -> Result<Outcome> {
        octets = message.size();
        const auto written = platform::ReplaceChosenFile(file, place.folders.OwnFiles(), [&](int fd) {
          return message::WriteMessage(message, fd, file, &place.cancel);
        });
        return written ? Result<Outcome>(Taken()) : written.error();
      });
  if (!made) return made.error();
  if (made->state != smtp::State::kSent) return Error{Failure::kNoInput, made->reason, ""};
  return octets;
}

ResultCode CodeOf(const Result<Outcome>& end) { return end ? end->code : ResultCode::kException; }

Sentence WhatBecameOf(const Result<Outcome>& end) {
  if (!end) return AsSentence(end.error());
  if (end->state == smtp::State::kSent) return "The request is on its way.";
  if (end->state != smtp::State::kUnknown && end->code == ResultCode::kCancelled)
    return "The request was not sent: it was cancelled.";
  const std::string why = smtp::WhyText(*end);
  if (end->state == smtp::State::kUnknown) return Say("It is not known whether the request has arrived. {}", why);
  return Say("The request was not sent. {}", why);
}

Result<void> TellEnd(const Result<Outcome>& end, platform::Prompts& prompts, platform::Desktop& desktop) {
  if (end && end->state == smtp::State::kSent) {
    prompts.Inform(std::string(kSentSentence) + "\r\nPlease click Cancel to quit.");
    return {};
  }
  if (CodeOf(end) == ResultCode::kCancelled) return {};
  prompts.Warn(smtp::WriteSendStatus(static_cast<std::int32_t>(CodeOf(end))));
  if (prompts.Ask(kOnlineQuestion) != platform::Answer::kYes) return {};
  return desktop.OpenPage(kSupportPage);
}

}  // namespace quillcast::support
