// The dialog that asks for the name of a template of the person's own.
#pragma once

#include <QDialog>

#include "document/own_templates.h"
#include "platform/prompts.h"

class QLineEdit;

namespace quillcast::desktop {

class StatusLine;

class TemplateNameForm final : public QDialog {
  Q_OBJECT
 public:
  // `name` stands there at first, and is marked.
  TemplateNameForm(platform::Prompts& prompts, const document::OwnTemplates& own, const QString& title,
                   const QString& name, QWidget* parent);

  // The name that the template has already: it is not asked about.
  void SetPresent(const QString& present) { present_ = present; }
  // Without blanks around it.
  QString name() const;
  // Whether the template that has the name is to go.
  document::IfThere if_there() const { return if_there_; }

 public slots:
  // Stays open where no template can have the name, or one has it that is not to be replaced.
  void accept() override;

 private:
  void Complain(const QString& sentence);

  platform::Prompts& prompts_;
  const document::OwnTemplates& own_;
  QString present_;
  document::IfThere if_there_ = document::IfThere::kFail;
  QLineEdit* name_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
