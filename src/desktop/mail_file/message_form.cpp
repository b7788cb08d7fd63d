#include "desktop/mail_file/message_form.h"

#include <QPushButton>
#include <utility>

#include "desktop/mail_file/message_view.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

MessageForm::MessageForm(const profile::SettingsStore& settings, std::filesystem::path file, MessageTools tools,
                         QWidget* parent)
    : QDialog(parent), file_(std::move(file)) {
  setObjectName("MessageForm");
  setWindowTitle(tr("Message File - %1").arg(ToQt(platform::Printable(file_.filename().string(), 100))));
  resize(780, 620);
  auto* view = new MessageView(settings, this);
  auto* column = new FormColumn(this);
  column->Add(view, 1);
  QPushButton* extract = AddTool("ExtractButton", tr("E&xtract…"), std::move(tools.extract));
  QPushButton* take = AddTool("ImportButton", tr("&Import…"), std::move(tools.take_over));
  QPushButton* print = AddTool("PrintButton", tr("P&rint…"), std::move(tools.print));
  auto* close = new QPushButton(tr("Close"), this);
  close->setObjectName("CloseButton");
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  column->AddLine({extract, take, print, nullptr, close});
  connect(view, &MessageView::Loaded, this, [=](bool is_loaded) {
    for (QPushButton* button : {extract, take, print}) button->setEnabled(is_loaded);
  });
  view->Show(file_);
}

// Of use once the message is loaded.
QPushButton* MessageForm::AddTool(const char* name, const QString& text, MessageTools::Tool tool) {
  auto* button = new QPushButton(text, this);
  button->setObjectName(name);
  button->setEnabled(false);
  connect(button, &QPushButton::clicked, this, [this, tool = std::move(tool)] { tool(file_, this); });
  return button;
}

}  // namespace quillcast::desktop
