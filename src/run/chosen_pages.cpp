#include "run/chosen_pages.h"

#include <algorithm>
#include <utility>

#include "platform/cancel.h"
#include "run/kept_runs.h"
#include "run/run_words.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kMostPages = 8;

std::string WhyOf(const JournalRow& row) {
  if (row.state == ResultState::kSent) return smtp::ReplyText(row.reply);
  if (row.state == ResultState::kUnknown && row.reply.code == 0 && !row.reason.empty()) return row.reason;
  if (row.attempts == 0 && row.code == 0) return {};
  return smtp::WhyText({smtp::State::kFailed, static_cast<smtp::ResultCode>(row.code), row.reply, row.reason});
}

}  // namespace

void ChosenPages::Choose(MailingId mailing, RecipientChoice choice) {
  mailing_ = mailing;
  choice_ = std::move(choice);
  pages_.clear();
  trouble_.reset();
  reads_ = 0;
}

Result<std::optional<ChosenRow>> ChosenPages::At(std::int64_t number) {
  if (trouble_) return *trouble_;
  const std::int64_t first = number / kPage * kPage;
  auto page = std::ranges::find(pages_, first, &Page::first);
  if (page == pages_.end()) {
    auto read = Read(first);
    if (!read) {
      trouble_ = read.error();
      return read.error();
    }
    if (pages_.size() == kMostPages) pages_.pop_back();
    pages_.push_front(*std::move(read));
    page = pages_.begin();
  }
  const auto at = static_cast<std::size_t>(number - first);
  if (at >= page->rows.size()) return std::optional<ChosenRow>();
  return std::optional(page->rows[at]);
}

Result<ChosenPages::Page> ChosenPages::Read(std::int64_t first) {
  ++reads_;
  const platform::CancelToken none;
  const auto journal = OpenJournal(folders_, clock_, none);
  if (!journal) return journal.error();
  Page page{first, {}};
  const auto visited = (*journal)->Visit(mailing_, choice_, first, [&page](const JournalRow& row) -> Result<bool> {
    page.rows.push_back({row.position, std::string(row.recipient.email()), StandingOf(row), WhyOf(row)});
    return std::ssize(page.rows) < kPage;
  });
  if (!visited) return visited.error();
  return page;
}

}  // namespace quillcast::run
