#include "run/mailing_lists.h"

#include <array>
#include <numeric>
#include <string>

#include "recipients/edit/edit.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/export/export_line.h"
#include "recipients/group_checks.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kListBlock = std::size_t{64} * 1024;

recipients::ExportFormat WholeRows() {
  recipients::ExportFormat format;
  format.fields.resize(recipients::kFieldCount);
  std::iota(format.fields.begin(), format.fields.end(), std::size_t{0});
  format.rfc4180 = true;
  return format;
}

Result<GroupMade> Fill(RunJournal& journal, const MailingEntry& mailing, const RecipientChoice& choice,
                       std::string_view name, recipients::RecipientStore& store) {
  recipients::Edit edit(store, {});
  if (auto begun = edit.Begin(); !begun) return begun.error();
  const auto group = edit.RequireGroup(name);
  if (!group) return group.error();
  GroupMade made;
  auto visited = journal.Visit(mailing.id, choice, 0, [&](const JournalRow& row) -> Result<bool> {
    const auto added = edit.AddIfNew(group->id, row.recipient);
    if (!added) return added.error();
    ++(*added ? made.added : made.twice);
    if (auto goes_on = edit.Advance(); !goes_on) return goes_on.error();
    return true;
  });
  if (!visited) return visited.error();
  auto done = edit.Commit({recipients::EditKind::kCopy, mailing.group, std::string(name), made.added});
  if (!done) return done.error();
  return made;
}

}  // namespace

Result<std::int64_t> WriteList(RunJournal& journal, MailingId mailing, const RecipientChoice& choice,
                               const platform::CancelToken& cancel,
                               const std::function<Result<void>(std::string_view text)>& write) {
  recipients::ExportLines lines(WholeRows());
  std::string block;
  lines.AppendHeading(block);
  std::int64_t rows = 0;
  auto visited = journal.Visit(mailing, choice, 0, [&](const JournalRow& row) -> Result<bool> {
    if (cancel.Requested() != platform::Stop::kNone) {
      return Error{Failure::kTryAgain, "The export was cancelled.", "Run it again for all of it."};
    }
    std::array<std::string_view, recipients::kFieldCount> values;
    std::copy(row.recipient.values.begin(), row.recipient.values.end(), values.begin());
    lines.Append(values, block);
    ++rows;
    if (block.size() < kListBlock) return true;
    auto written = write(block);
    block.clear();
    if (!written) return written.error();
    return true;
  });
  if (!visited) return visited.error();
  if (auto written = write(block); !written) return written.error();
  return rows;
}

Result<GroupMade> MakeGroup(RunJournal& journal, const MailingEntry& mailing, const RecipientChoice& choice,
                            std::string_view name, recipients::RecipientStore& store) {
  const auto complaint = recipients::MakeGroup(store, name);
  if (!complaint) return complaint.error();
  if (*complaint) {
    const auto& refused = **complaint;
    if (!refused.message.empty()) return Error{Failure::kUsage, Sentence(refused.message)};  // says all
    return Error{Failure::kUsage, refused.reason, "Name another group."};
  }
  auto made = Fill(journal, mailing, choice, name, store);
  // Half a group would be taken for a whole one.
  if (!made) IgnoreErrors(recipients::DeleteWholeGroup(store, name, {}));
  return made;
}

}  // namespace quillcast::run
