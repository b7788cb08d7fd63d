#include "run/single_message.h"

#include <fmt/format.h>

#include <utility>

#include "document/merge_fields.h"
#include "platform/text.h"
#include "recipients/text_order.h"
#include "smtp/envelope_address.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

class SingleMailing final : public smtp::JobSource {
 public:
  SingleMailing(message::RenderedMessage& message, const std::function<void(std::string_view)>& log_line)
      : log_line_(log_line) {
    job_.envelope = message.envelope;
    job_.message = &message;
  }
  smtp::Job* NextJob() override { return std::exchange(taken_, true) ? nullptr : &job_; }
  void Finished(smtp::Job&, const smtp::Outcome& outcome) override { outcome_ = outcome; }
  void LogLine(std::string_view line) override { log_line_(line); }
  void Progress(std::uint64_t, std::uint64_t) override {}
  const smtp::Outcome& outcome() const { return outcome_; }

 private:
  const std::function<void(std::string_view)>& log_line_;
  smtp::Job job_;
  bool taken_ = false;
  smtp::Outcome outcome_{
      .state = smtp::State::kFailed, .code = smtp::ResultCode::kCancelled, .reply = {}, .reason = {}};
};

bool HasAddress(const recipients::Recipient& row, std::string_view address) {
  if (recipients::CompareText(row.email(), address) == 0) return true;
  const auto envelope = smtp::EnvelopeAddress(row.email());
  return envelope && recipients::CompareText(envelope->text(), address) == 0;
}

}  // namespace

Result<recipients::Recipient> FindRow(recipients::RowSource& rows, std::string_view address) {
  std::optional<recipients::Recipient> found;
  const auto walked = Walk(rows, {}, nullptr, [&](const recipients::Recipient& row, std::int64_t) {
    if (address.empty() || HasAddress(row, address)) found = row;
    return !found;
  });
  if (!walked) return walked.error();
  if (found) return *found;
  if (address.empty()) return Error{Failure::kUsage, "The group has no recipients.", "Add some first."};
  return Error{Failure::kUsage, Say("{} is not in the group.", platform::Printable(address, 100)),
               "Name one of the group's recipients."};
}

Result<recipients::Recipient> FindRowAt(recipients::RowSource& rows, std::int64_t position,
                                        const platform::CancelToken& cancel) {
  std::optional<recipients::Recipient> found;
  const auto walked = Walk(rows, recipients::PartialRange{position, position}, &cancel,
                           [&found](const recipients::Recipient& row, std::int64_t) {
                             found = row;
                             return false;
                           });
  if (!walked) return walked.error();
  if (found) return *found;
  if (*walked == recipients::Walked::kCancelled) return Error{Failure::kTryAgain, "Stopped.", ""};
  return Error{Failure::kUsage, Say("The group has no recipient #{}.", position), ""};
}

Result<void> RenderFor(const recipients::Recipient& row, std::string_view send_to,
                       const message::MessageTemplate& message, message::RenderedMessage& out) {
  if (const auto& trouble = message.trouble()) return trouble->error;
  const auto to = smtp::EnvelopeAddress(send_to.empty() ? std::string_view(row.email()) : send_to);
  if (!to) return to.error();
  return message.Render(row, *to, 1, out);
}

// A tag that is replaced by itself stays.
Result<void> RenderWithTags(const message::MessageTemplate& message, const smtp::Address& to,
                            message::RenderedMessage& out) {
  recipients::Recipient tags;
  for (std::size_t i = 0; i < tags.values.size(); ++i) tags.values[i] = document::kMergeFields[i].tag;
  return message.Render(tags, to, 1, out);
}

smtp::Outcome SendAlone(Carrier& carrier, message::RenderedMessage& message,
                        const std::function<void(std::string_view)>& log_line) {
  SingleMailing mailing(message, log_line);
  carrier.Carry(mailing);
  return mailing.outcome();
}

}  // namespace quillcast::run
