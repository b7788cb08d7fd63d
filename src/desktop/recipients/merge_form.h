// The dialog in which the groups are chosen that go into another one.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "profile/program.h"

namespace quillcast::desktop {

class RowList;

class MergeForm final : public QDialog {
  Q_OBJECT
 public:
  // `groups` are all there are; what is chosen of the others goes into `into`.
  MergeForm(const profile::Program& program, const std::vector<std::string>& groups, std::string into, QWidget* parent);
  std::vector<std::string> Chosen() const;

 public slots:
  // Asks first; stays open where none is chosen.
  void accept() override;

 private:
  const profile::Program& program_;
  const std::string into_;
  std::vector<std::string> others_;
  RowList* list_;
};

}  // namespace quillcast::desktop
