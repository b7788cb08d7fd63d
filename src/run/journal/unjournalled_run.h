// A run whose results nobody keeps: its messages go into files, where each can be seen. Nothing makes them wait, so
// that nobody is asked for again.
#pragma once

#include <memory>
#include <optional>

#include "recipients/row_source.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

class UnjournalledRun final : public JournalledRun {
 public:
  // `rows` knows its size.
  UnjournalledRun(std::unique_ptr<recipients::RowSource> rows, const std::optional<recipients::PartialRange>& range);

  RunId id() const override { return 0; }
  std::int64_t size() const override { return size_; }
  std::int64_t list_size() const override { return list_size_; }
  Result<bool> Next(recipients::Recipient& recipient, std::int64_t& position) override;
  Before before() const override { return {}; }
  Result<void> Again(std::int64_t position, recipients::Recipient& recipient) override;
  void GoesOut(std::int64_t /*position*/) override {}
  void Settled(std::int64_t /*position*/, const smtp::Outcome& /*outcome*/) override {}
  void IsTriedAgain(std::int64_t /*position*/, int /*tries*/) override {}
  Result<void> Record() override { return {}; }
  void Show() override {}
  Result<void> End() override { return {}; }

 private:
  const std::unique_ptr<recipients::RowSource> rows_;
  const std::int64_t list_size_;
  const std::int64_t size_;
  recipients::RowWalk walk_;
};

}  // namespace quillcast::run
