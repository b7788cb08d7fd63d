// The dialog in which the order of a group is picked: by up to three fields.
#pragma once

#include <QDialog>
#include <array>
#include <string>
#include <string_view>

class QCheckBox;
class QComboBox;

namespace quillcast::desktop {

class SortForm final : public QDialog {
  Q_OBJECT
 public:
  // What the group is sorted by now.
  SortForm(std::string_view sort_sql, QWidget* parent);
  // As the store takes it; empty for the order of adding.
  std::string SortText() const;

 private:
  struct Key {
    QComboBox* field;
    QCheckBox* descends;
  };
  std::array<Key, 3> keys_{};
};

}  // namespace quillcast::desktop
