// The dialog that asks for the name to keep a mapping under.
#pragma once

#include <QDialog>

#include "profile/program.h"

class QLineEdit;

namespace quillcast::desktop {

class StatusLine;

// It keeps nothing: whoever opened it does, under name(), which CheckMappingName has passed by then.
class MappingKeepForm final : public QDialog {
  Q_OBJECT
 public:
  // `name` stands there at first, and is marked.
  MappingKeepForm(const profile::Program& program, const QString& name, QWidget* parent);
  // Without blanks around it.
  QString name() const;

 public slots:
  // Stays open where no mapping can have the name, or one has it that is not to be replaced.
  void accept() override;

 private:
  const profile::Program& program_;
  QLineEdit* name_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
