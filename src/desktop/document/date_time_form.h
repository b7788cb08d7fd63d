// The dialog in which the formats of the date and the time that go into the message are chosen.
#pragma once

#include <QDialog>

#include "document/date_time.h"
#include "platform/clock.h"
#include "platform/prompts.h"

class QListWidget;

namespace quillcast::desktop {

class HtmlEditor;

// The date and the time are those of its opening. OK puts both into the editor, in place of what is selected there, and
// closes it, once one of each list is chosen.
class DateTimeForm final : public QDialog {
  Q_OBJECT
 public:
  DateTimeForm(platform::Prompts& prompts, const platform::Clock& clock, HtmlEditor& editor, QWidget* parent);

 public slots:
  void accept() override;

 private:
  platform::Prompts& prompts_;
  HtmlEditor& editor_;
  QListWidget* dates_;
  QListWidget* times_;
};

}  // namespace quillcast::desktop
