#include "desktop/mail_file/message_tools.h"

#include <QPushButton>
#include <utility>

#include "desktop/mail_file/message_view.h"
#include "desktop/widgets/form_column.h"

namespace quillcast::desktop {

MessageToolRow::MessageToolRow(MessageView& view, MessageTools tools, std::function<std::filesystem::path()> shown,
                               QDialog* dialog)
    : QObject(dialog),
      shown_(std::move(shown)),
      buttons_{Add("ExtractButton", tr("E&xtract…"), std::move(tools.extract), dialog),
               Add("ImportButton", tr("&Import…"), std::move(tools.take_over), dialog),
               Add("PrintButton", tr("P&rint…"), std::move(tools.print), dialog)},
      close_(new QPushButton(tr("Close"), dialog)) {
  buttons_[0]->setDefault(true);
  close_->setObjectName("CloseButton");
  connect(close_, &QPushButton::clicked, dialog, &QDialog::reject);
  connect(&view, &MessageView::Loaded, this, [this](bool is_loaded) {
    for (QPushButton* button : buttons_) button->setEnabled(is_loaded);
  });
}

void MessageToolRow::AddTo(FormColumn* column) const {
  column->AddLine({buttons_[0], buttons_[1], buttons_[2], nullptr, close_});
}

QPushButton* MessageToolRow::Add(const char* name, const QString& text, MessageTools::Tool tool, QDialog* dialog) {
  auto* button = new QPushButton(text, dialog);
  button->setObjectName(name);
  button->setEnabled(false);
  connect(button, &QPushButton::clicked, this, [this, dialog, tool = std::move(tool)] { tool(shown_(), dialog); });
  return button;
}

}  // namespace quillcast::desktop
