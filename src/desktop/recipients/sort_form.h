// The dialog in which the order of a group is picked: by three fields, or as many as it is stored with.
#pragma once

#include <QDialog>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/sort_order.h"

class QCheckBox;
class QComboBox;

namespace quillcast::desktop {

class FormGrid;

// It writes nothing: whoever opened it does. A stored order that is not understood is told in a note, and OK puts what
// is picked in its place.
class SortForm final : public QDialog {
  Q_OBJECT
 public:
  // What the group is sorted by now; all of it is shown. Where it is not understood, that is said instead.
  SortForm(std::string_view sort_sql, QWidget* parent);
  // Something else was picked than is stored, or what is stored is not understood.
  bool has_changed() const;
  // As the store takes it; empty for the order of adding.
  std::string SortText() const;

 private:
  struct Key {
    QComboBox* field;
    QCheckBox* descends;
  };
  void AddKey(FormGrid& grid, std::size_t count, const recipients::SortKey& stored);
  std::string Picked() const;

  std::vector<Key> keys_;
  std::string opened_with_;
  bool is_understood_ = true;
};

}  // namespace quillcast::desktop
