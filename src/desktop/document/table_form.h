// The dialog in which a table is asked for.
#pragma once

#include <QDialog>

#include "document/table_html.h"
#include "platform/prompts.h"

class QComboBox;
class QLineEdit;
class QRadioButton;

namespace quillcast::desktop {

// OK closes it only when document::CheckTable has nothing against the choice.
class TableForm final : public QDialog {
  Q_OBJECT
 public:
  TableForm(platform::Prompts& prompts, QWidget* parent);

  // As it stands in the boxes; after OK it has passed the check.
  document::TableChoice Choice() const;

 public slots:
  void accept() override;

 private:
  platform::Prompts& prompts_;
  QComboBox* align_;
  QLineEdit* rows_;
  QLineEdit* columns_;
  QLineEdit* border_;
  QLineEdit* spacing_;
  QLineEdit* padding_;
  QLineEdit* width_;
  QRadioButton* percent_;
};

}  // namespace quillcast::desktop
