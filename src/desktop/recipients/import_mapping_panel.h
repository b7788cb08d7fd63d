// Which field of a line goes into which field of a recipient: a list for each of the eighteen, scrolled.
#pragma once

#include <QScrollArea>
#include <array>
#include <string>
#include <vector>

#include "recipients/import/import_mapping.h"

class QComboBox;

namespace quillcast::desktop {

class ImportMappingPanel final : public QScrollArea {
  Q_OBJECT
 public:
  explicit ImportMappingPanel(QWidget* parent);

  // What each list offers, "Ignore" first, which is then chosen in all of them.
  void Offer(const std::vector<std::string>& entries);
  bool has_fields() const { return Offers(1); }
  // Whether this field of the line, counted from 1, can be chosen.
  bool Offers(int source) const;
  recipients::ImportMapping Mapping() const;
  // What the lists do not offer is "Ignore".
  void Choose(const recipients::ImportMapping& mapping);
  QComboBox* list(std::size_t field) const { return lists_[field]; }

 signals:
  void Changed();

 private:
  std::array<QComboBox*, recipients::kFieldCount> lists_{};
};

}  // namespace quillcast::desktop
