#include "desktop/recipients/where_form.h"

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {

WhereForm::WhereForm(const profile::Program& program, const std::string& entry, QWidget* parent)
    : QDialog(parent),
      list_(new RowList(
          "HoldersList", tr("Groups"), {{tr("Group"), 24}, {tr("Entry")}},
          [this](std::size_t row, int column) {
            const auto& holder = holders_.at(row);
            return ToQt(platform::Printable(column == 0 ? holder.group : holder.entry));
          },
          this)),
      status_(new StatusLine(this)),
      task_(new BackgroundTask(this)) {
  setObjectName("WhereForm");
  setWindowTitle(tr("Groups of an Address"));
  resize(520, 300);
  list_->SetEmptyText(tr("The groups that hold the address are listed here."));
  auto* column = new FormColumn(this);
  column->Add(list_, 1);
  column->Add(status_);
  column->AddButtons(QDialogButtonBox::Close);
  const QString name = ToQt(platform::Printable(entry));
  status_->Say(tr("Looking for %1…").arg(name));
  task_->Start([this, name, entry, file = program.folders.Database()](const platform::CancelToken& cancel) {
    const auto found = recipients::GroupsOfAddress(recipients::RecipientStore(file, {.cancel = &cancel}), entry);
    return [this, name, found] {
      if (!found) return status_->Fail(found.error());
      holders_ = *found;
      list_->Reset(holders_.size());
      if (holders_.empty()) return status_->Say(tr("No group holds %1.").arg(name));
      status_->Say(Counted(static_cast<std::int64_t>(holders_.size()), tr("%1 is in 1 group.").arg(name),
                           tr("%2 is in %1 groups.").replace("%2", name)));
    };
  });
}

}  // namespace quillcast::desktop
