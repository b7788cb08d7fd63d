// The dialog in which a horizontal line is asked for.
#pragma once

#include <QDialog>

#include "document/line_html.h"
#include "platform/prompts.h"

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace quillcast::desktop {

// OK closes it only when document::CheckLine has nothing against the choice.
class LineForm final : public QDialog {
  Q_OBJECT
 public:
  LineForm(platform::Prompts& prompts, QWidget* parent);

  // As it stands in the boxes; after OK it has passed the check.
  document::LineChoice Choice() const;

 public slots:
  void accept() override;

 private:
  platform::Prompts& prompts_;
  QLineEdit* width_;
  QComboBox* unit_;
  QLineEdit* height_;
  QComboBox* align_;
  QCheckBox* solid_;
};

}  // namespace quillcast::desktop
