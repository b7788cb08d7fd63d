#include "desktop/mail_file/message_form.h"

#include <utility>

#include "desktop/mail_file/message_view.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

MessageForm::MessageForm(const profile::SettingsStore& settings, const std::filesystem::path& file, MessageTools tools,
                         QWidget* parent)
    : QDialog(parent) {
  setObjectName("MessageForm");
  setWindowTitle(tr("Message File - %1").arg(ToQt(platform::Printable(file.filename().string(), 100))));
  resize(780, 620);
  auto* view = new MessageView(settings, this);
  auto* column = new FormColumn(this);
  column->Add(view, 1);
  auto* row = new MessageToolRow(
      *view, std::move(tools), [file] { return file; }, this);
  row->AddTo(column);
  view->Show(file);
}

}  // namespace quillcast::desktop
