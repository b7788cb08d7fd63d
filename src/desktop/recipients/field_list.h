// The fields of a recipient, to be ticked and put into an order.
#pragma once

#include <QWidget>
#include <cstddef>
#include <vector>

class QCheckBox;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace quillcast::desktop {

class FieldList final : public QWidget {
  Q_OBJECT
 public:
  explicit FieldList(QWidget* parent);

  // Those that are ticked, from above to below.
  std::vector<std::size_t> Ticked() const;
  QListWidget* list() const { return list_; }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void TakeColours();
  // The chosen entry, its tick with it; it stays chosen.
  void Move(int by);
  void EnableButtons();
  void TakeTick(QListWidgetItem* entry);
  void TickAll();
  void ShowWhetherAll();

  QListWidget* list_;
  QPushButton* up_;
  QPushButton* down_;
  QCheckBox* all_;
};

}  // namespace quillcast::desktop
