#include "desktop/mail_file/message_tools.h"

#include <QPushButton>
#include <utility>

#include "desktop/mail_file/message_view.h"

namespace quillcast::desktop {

MessageToolButtons::MessageToolButtons(MessageView& view, MessageTools tools,
                                       std::function<std::filesystem::path()> shown, QWidget* dialog)
    : QObject(dialog),
      shown_(std::move(shown)),
      buttons_{Add("ExtractButton", tr("E&xtract…"), std::move(tools.extract), dialog),
               Add("ImportButton", tr("&Import…"), std::move(tools.take_over), dialog),
               Add("PrintButton", tr("P&rint…"), std::move(tools.print), dialog)} {
  buttons_[0]->setDefault(true);
  connect(&view, &MessageView::Loaded, this, [this](bool is_loaded) {
    for (QPushButton* button : buttons_) button->setEnabled(is_loaded);
  });
}

QPushButton* MessageToolButtons::Add(const char* name, const QString& text, MessageTools::Tool tool, QWidget* dialog) {
  auto* button = new QPushButton(text, dialog);
  button->setObjectName(name);
  button->setEnabled(false);
  connect(button, &QPushButton::clicked, this, [this, dialog, tool = std::move(tool)] { tool(shown_(), dialog); });
  return button;
}

}  // namespace quillcast::desktop
