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

  // The row that a command on one recipient is for, as it is in the store now: the current one of those that Meant
  // gives. Where several are chosen, Said says which it is; where it cannot be read, Failed says why, and there is
  // none.
  struct OneRow {
    std::size_t row = 0;
    recipients::GridRow texts;
  };
  std::optional<OneRow> TakeOne();
  std::vector<std::int64_t> ChosenKeys() const;
  // What a command means that names who it is for before it does anything: the chosen rows, or else the current one
  // since a Remove that chose nobody.
  std::vector<std::size_t> Meant() const;
  // The nearest row to those that were taken away is the current one. It is chosen too only where no command does
  // something to all as long as nobody is chosen: what looks chosen is what every command takes.
  enum class Nearest : std::uint8_t { kChosen, kCurrent };
  // Takes rows away, from above to below; nothing scrolls.
  void Remove(std::span<const std::size_t> rows, Nearest nearest);
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
  bool means_current_ = false;
  QString typed_;
  QElapsedTimer since_typed_;
};

}  // namespace quillcast::desktop
