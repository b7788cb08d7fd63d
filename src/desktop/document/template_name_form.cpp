#include "desktop/document/template_name_form.h"

#include <QLineEdit>
#include <algorithm>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr int kNameFormWidth = 280;  // pixels

}  // namespace

TemplateNameForm::TemplateNameForm(platform::Prompts& prompts, const document::OwnTemplates& own, const QString& title,
                                   const QString& name, QWidget* parent)
    : QDialog(parent), prompts_(prompts), own_(own), name_(new QLineEdit(name, this)) {
  setObjectName("TemplateNameForm");
  setWindowTitle(title);
  auto* column = new FormColumn(this);
  column->AddGrid()->Add("NameTextBox", tr("&Name:"), name_);
  name_->setMinimumWidth(kNameFormWidth);
  status_ = column->Add(new StatusLine(this));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  name_->selectAll();
  name_->setFocus();
}

QString TemplateNameForm::name() const { return name_->text().trimmed(); }

// Of more lines than there was room for.
void TemplateNameForm::Complain(const QString& sentence) {
  status_->Say(sentence, NoteKind::kFailure);
  layout()->activate();
  resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
}

void TemplateNameForm::accept() {
  name_->setFocus();
  const std::string typed = FromQt(name());
  if (const auto complaint = document::CheckTemplateName(typed)) return Complain(InWords(complaint->reason));
  if (name() != present_ && own_.Has(typed)) {
    const auto question = Say("There is a template “{}” already.\r\nWould you like to replace it?", typed);
    if (prompts_.Ask(FromQt(InWords(question))) != platform::Answer::kYes) return;
    if_there_ = document::IfThere::kReplace;
  }
  QDialog::accept();
}

}  // namespace quillcast::desktop
