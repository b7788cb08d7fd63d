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

// A command on several rows takes ChosenKeys; one on a single recipient TakeOne; one that asks about those it is for,
// and then acts on them, Meant. Rows are places in the list as it is now: hold keys over anything that lets it change.
class GridActions final : public QObject {
  Q_OBJECT
 public:
  // Belongs to the list.
  GridActions(RecipientRows* rows, RowList* list);
  ~GridActions() override;
  // Lets a view be sorted by a press on a heading, or from the menu.
  void AddOrders();
  void ShowOrder(recipients::ViewOrder order);

  // The row that a command on one recipient is for, as it is in the store now: the current one where it is among those
  // that Meant gives, else the first of them. Where they are several, Said says which it is. None where Meant gives
  // none, and where it cannot be read; then Failed says why.
  struct OneRow {
    std::size_t row = 0;
    recipients::GridRow texts;
  };
  std::optional<OneRow> TakeOne();
  // From above to below; empty where none is chosen, whichever row is the current one.
  std::vector<std::int64_t> ChosenKeys() const;
  // The rows that a command means: those that are chosen, or else the current one after a Remove that chose nobody.
  std::vector<std::size_t> Meant() const;
  // The nearest row to those that were taken away becomes the current one. kChosen also chooses it; kCurrent is for a
  // window where some command takes all rows as long as none is chosen, which one that nobody chose would narrow.
  enum class Nearest : std::uint8_t { kChosen, kCurrent };
  // Takes rows away, from above to below; nothing scrolls.
  void Remove(std::span<const std::size_t> rows, Nearest nearest);
  recipients::ListPlace Place() const;
  // After other rows were put into the list.
  void GoTo(const recipients::ListPlace& place);

 signals:
  // For the status line of the window, and `column` from 0, the running number. The list does not sort itself: whoever
  // owns it reads the group in that order and calls ShowOrder.
  void HeadingPressed(int column);
  void Said(const QString& sentence);
  void Failed(const quillcast::Error& error);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

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
