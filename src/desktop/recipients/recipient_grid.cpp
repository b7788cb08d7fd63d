#include "desktop/recipients/recipient_grid.h"

#include <QTimer>
#include <algorithm>

#include "desktop/recipients/grid_actions.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "platform/text.h"
#include "profile/program.h"
#include "recipients/grid_rows.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kBlock = recipients::kKeysAtOnce;  // rows that are fetched together
constexpr std::size_t kMostBlocks = 20;
constexpr int kPauseAfterTrouble = 1000;  // milliseconds

enum GridColumn { kNumber, kFirstNameColumn, kLastNameColumn, kAddress };

QString TextOf(RecipientRows& rows, std::size_t row, int column) {
  if (column == kNumber) return QString::number(row + 1);
  const recipients::GridRow* texts = rows.At(row);
  if (texts == nullptr) return {};
  if (texts->id == 0) return column == kAddress ? RecipientRows::tr("(no longer in the group)") : QString();
  const std::string& text = column == kFirstNameColumn  ? texts->first_name
                            : column == kLastNameColumn ? texts->last_name
                                                        : texts->email;
  return ToQt(platform::Printable(text));
}

}  // namespace

RecipientRows::RecipientRows(std::filesystem::path store, QObject* parent)
    : QObject(parent), store_(std::move(store), profile::kWindowPatience) {}

void RecipientRows::Reset(std::vector<std::int64_t> keys, std::int64_t group_id) {
  keys_ = std::move(keys);
  group_id_ = group_id;
  blocks_.clear();
}

void RecipientRows::Append(std::span<const std::int64_t> keys) {
  blocks_.erase(keys_.size() / kBlock);  // the last one may have been shorter
  keys_.insert(keys_.end(), keys.begin(), keys.end());
}

void RecipientRows::Remove(std::span<const std::size_t> rows) {
  std::size_t kept = 0;
  auto next = rows.begin();
  for (std::size_t row = 0; row < keys_.size(); ++row) {
    if (next != rows.end() && *next == row) {
      ++next;
    } else {
      keys_[kept++] = keys_[row];
    }
  }
  keys_.resize(kept);
  blocks_.clear();
}

void RecipientRows::Put(std::size_t row, const recipients::GridRow& texts) {
  const auto block = blocks_.find(row / kBlock);
  if (block != blocks_.end()) block->second[row % kBlock] = texts;
}

const recipients::GridRow* RecipientRows::At(std::size_t row) {
  if (!blocks_.contains(row / kBlock) && !waits_) Fetch(row);
  const auto block = blocks_.find(row / kBlock);
  return block == blocks_.end() ? nullptr : &block->second[row % kBlock];
}

Result<recipients::GridRow> RecipientRows::ReadNow(std::size_t row) {
  const auto texts = store_.RowsOfKeys(std::span(keys_).subspan(row, 1), group_id_);
  if (!texts) return texts.error();
  Put(row, texts->front());
  if (texts->front().id == 0) return recipients::RecipientGone();
  return texts->front();
}

void RecipientRows::Fetch(std::size_t row) {
  const std::size_t block = row / kBlock;
  const auto keys = std::span(keys_).subspan(block * kBlock);
  auto texts = store_.RowsOfKeys(keys.first(std::min(kBlock, keys.size())), group_id_);
  if (texts) {
    if (blocks_.size() == kMostBlocks) blocks_.clear();
    blocks_.emplace(block, std::move(*texts));
    return;
  }
  // Whoever paints asks for each cell, and is not to wait for each.
  waits_ = true;
  QTimer::singleShot(kPauseAfterTrouble, this, [this] {
    waits_ = false;
    emit Changed();
  });
  emit Trouble(InWords(texts.error()));
}

RowList* MakeRecipientGrid(RecipientRows* rows, QWidget* parent) {
  auto* list = new RowList(
      "MSFlexGrid", RecipientRows::tr("Recipients"),
      {{RecipientRows::tr("No."), 8, true},
       {RecipientRows::tr("First Name"), 20},
       {RecipientRows::tr("Last Name"), 20},
       {RecipientRows::tr("Email Address")}},
      [rows](std::size_t row, int column) { return TextOf(*rows, row, column); }, parent, RowColourSet::kGiven);
  list->setSelectionMode(QAbstractItemView::ExtendedSelection);
  QObject::connect(rows, &RecipientRows::Changed, list, [list] { list->viewport()->update(); });
  new GridActions(rows, list);
  return list;
}

}  // namespace quillcast::desktop
