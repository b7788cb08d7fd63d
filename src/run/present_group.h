// The group of a mailing as it is now, beside the list that the mailing was frozen with.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "platform/result.h"
#include "recipients/recipient_store.h"
#include "run/frozen/frozen_inputs.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// Longer lists are not compared row by row: who goes on with a million recipients does not wait for that.
inline constexpr std::int64_t kMostCompared = 40'000;

struct ListChanges {
  std::int64_t gone = 0;     // addresses that were frozen and are no longer there
  std::int64_t added = 0;    // addresses that were not there then; of a mailing to a part of the group nothing is known
  std::int64_t changed = 0;  // other fields beside the same address

  bool operator==(const ListChanges&) const = default;
};

// Tells two lists apart whatever their order, and holds sixteen octets a row.
class ListComparison {
 public:
  void AddThen(const recipients::Recipient& row) { Add(row, then_); }
  void AddNow(const recipients::Recipient& row) { Add(row, now_); }
  // Once, when all have been added.
  ListChanges Compare();

 private:
  using Row = std::pair<std::uint64_t, std::uint64_t>;  // what stands for the address, and for all of the row
  void Add(const recipients::Recipient& row, std::vector<Row>& rows);

  std::vector<Row> then_;
  std::vector<Row> now_;
  std::string octets_;  // of a row
};

struct PresentGroup {
  std::int64_t recipients = 0;
  std::optional<ListChanges> changes;  // nothing where they are too many to be compared
  std::string name;
  bool is_another = false;  // that one was deleted, and this has its name; nothing else is told of it
};

// Nothing where it was deleted and no other has its name. One of an earlier version, which did not keep the group's
// key, goes by its name. Fails as the journal and the store do.
Result<std::optional<PresentGroup>> LookAtGroup(RunJournal& journal, const MailingEntry& mailing,
                                                const MailingInputs& inputs, const recipients::RecipientStore& store);

}  // namespace quillcast::run
