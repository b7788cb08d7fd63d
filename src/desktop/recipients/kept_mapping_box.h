// The list of the mappings that are kept under a name, with the buttons that apply, keep and remove one.
#pragma once

#include <QComboBox>
#include <functional>
#include <vector>

#include "profile/program.h"
#include "recipients/import/kept_mappings.h"

class QPushButton;

namespace quillcast::desktop {

class StatusLine;

// It shows names alone: a mapping is read when it is applied, for another program may have changed it since.
class KeptMappingBox final : public QComboBox {
  Q_OBJECT
 public:
  // `status` says what came of it, and why something did not.
  KeptMappingBox(const profile::Program& program, StatusLine& status, QWidget* parent);

  // To stand beside the list, in this order: "ApplyMappingButton", "KeepMappingButton", "RemoveMappingButton".
  std::vector<QWidget*> buttons() const;
  void EnableAll(bool enable);
  // Asks for a name, first the one that is chosen or else `suggestion`, and keeps the mapping under it.
  void Keep(recipients::KeptMapping mapping, const QString& suggestion);

 signals:
  // A mapping that could be read; why another cannot is told in the status line.
  void Applied(const recipients::KeptMapping& mapping);
  // The mapping as it is chosen by now is to be kept: whoever knows it calls Keep.
  void KeepAsked();

 private:
  void Fill(const QString& chosen);
  void Apply();
  void Remove();
  void RemoveDamaged();
  void EnableButtons();

  const profile::Program& program_;
  StatusLine& status_;
  QPushButton* apply_;
  QPushButton* keep_;
  QPushButton* remove_;
  bool is_enabled_ = false;
  bool are_damaged_ = false;  // and can only be removed together
};

}  // namespace quillcast::desktop
