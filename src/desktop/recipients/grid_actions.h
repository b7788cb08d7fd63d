// What can be done in a grid of recipients by key and by its context menu: go to the row whose beginning one types,
// copy rows as text, choose all, and ask for another order.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <memory>

#include "desktop/widgets/background_task.h"

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
  void ShowOrder(int column, bool descending);

 signals:
  void HeadingPressed(int column);
  void Said(const QString& sentence);

 private:
  void Add(const char* name, const QString& text, const QKeySequence& keys, const std::function<void()>& act);
  void TypeAhead(const QString& text);
  void Copy();

  RecipientRows* rows_;
  RowList* list_;
  BackgroundTask* type_ahead_;
  BackgroundTask* copy_;
  QString typed_;
  QElapsedTimer since_typed_;
};

}  // namespace quillcast::desktop
