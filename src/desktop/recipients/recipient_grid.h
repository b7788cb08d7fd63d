// A grid of recipients of any number: their keys are kept, and the texts of the rows that are shown are fetched by
// them.
#pragma once

#include <QObject>
#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <vector>

#include "recipients/recipient_store.h"

class QWidget;

namespace quillcast::desktop {

class RowList;

// Rows are read in blocks by their keys, on the window's thread and when the first of a block is shown: that takes no
// longer in a group of a million. Rows that were read are not read again until Reset or ReadNow.
class RecipientRows final : public QObject {
  Q_OBJECT
 public:
  // `store` is opened for each read, and need not be there yet.
  RecipientRows(std::filesystem::path store, QObject* parent);

  // Of recipients of that group: one that another program moved to another group is gone.
  void Reset(std::vector<std::int64_t> keys, std::int64_t group_id);
  void Append(std::span<const std::int64_t> keys);
  // Rows from above to below.
  void Remove(std::span<const std::size_t> rows);
  // What a dialog wrote stands there without being read again.
  void Put(std::size_t row, const recipients::GridRow& texts);

  // For work on a thread of its own, which takes copies of them; the keys are in the order of the rows.
  const std::filesystem::path& file() const { return store_.file(); }
  std::size_t size() const { return keys_.size(); }
  const std::vector<std::int64_t>& keys() const { return keys_; }
  std::int64_t group_id() const { return group_id_; }
  // Null where the store cannot be read now; the key of one that is gone is 0.
  const recipients::GridRow* At(std::size_t row);
  // As it is in the store now, and then here too. Fails with kUsage where it is gone.
  Result<recipients::GridRow> ReadNow(std::size_t row);

 signals:
  // The store could not be read for a row that is shown; it is tried again in a second, when Changed comes.
  void Trouble(const QString& why);
  void Changed();

 private:
  void Fetch(std::size_t row);

  recipients::RecipientStore store_;
  std::vector<std::int64_t> keys_;
  std::int64_t group_id_ = 0;
  std::map<std::size_t, std::vector<recipients::GridRow>> blocks_;  // by their number
  bool waits_ = false;
};

// The list for them: running number, first name, last name, address; in the given colours. Several rows can be chosen,
// and copied as text; for what the keyboard can do there see GridActions, which is the list's child. After each call
// above that changes rows, the list is told by its own Reset or Grow.
RowList* MakeRecipientGrid(RecipientRows* rows, QWidget* parent);

}  // namespace quillcast::desktop
