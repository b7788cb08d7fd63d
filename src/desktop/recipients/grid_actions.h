// What can be done in a grid of recipients by key and by its context menu: go to the row whose beginning one types,
// copy rows as text, choose all, and ask for another order; and what its window needs for commands on its rows.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <memory>
#include <optional>
#include <span>

#include "desktop/widgets/background_task.h"
#include "platform/result.h"
#include "recipients/grid_rows.h"

namespace quillcast::desktop {

class RecipientRows;
class RowList;

class GridActions final : public QObject {
  Q_OBJECT
 public:
  // Belongs to the list.
  GridActions(RecipientRows* rows, RowList* list);
  ~GridActions() override;
  // Lets a view be sorted by a press on a heading, or from the menu.
  void AddOrders();
  void ShowOrder(recipients::ViewOrder order);

  // The row that a command on one recipient is for, as it is in the store now: the current one, where it is chosen.
  // Where several are chosen, Said says which it is; where it cannot be read, Failed says why, and there is none.
  struct OneRow {
    std::size_t row = 0;
    recipients::GridRow texts;
  };
  std::optional<OneRow> TakeOne();
  std::vector<std::int64_t> ChosenKeys() const;
  // False after Remove, until the person chooses again: what a command does to all where nobody is chosen, it then does
  // to all, and not to the neighbour of somebody who was deleted.
  bool is_chosen_by_person() const { return !is_neighbour_; }
  // Takes rows away, from above to below. The nearest row is the current one then, and nothing scrolls.
  void Remove(std::span<const std::size_t> rows);
  recipients::ListPlace Place() const;
  // After other rows were put into the list.
  void GoTo(const recipients::ListPlace& place);

 signals:
  void HeadingPressed(int column);
  void Said(const QString& sentence);
  void Failed(const quillcast::Error& error);

 private:
  void Add(const char* name, const QString& text, const QKeySequence& keys, const std::function<void()>& act);
  void TypeAhead(const QString& text);
  void Copy();

  RecipientRows* rows_;
  RowList* list_;
  BackgroundTask* type_ahead_;
  BackgroundTask* copy_;
  bool is_neighbour_ = false;
  QString typed_;
  QElapsedTimer since_typed_;
};

}  // namespace quillcast::desktop
