#include "desktop/document/own_templates_box.h"

#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <tuple>
#include <utility>

#include "desktop/document/template_name_form.h"
#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/first_key.h"
#include "desktop/widgets/folding_line.h"
#include "desktop/widgets/qt_text.h"
#include "document/edited_document.h"
#include "document/message_document.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

constexpr int kGap = 6;           // pixels
constexpr int kLeastHeight = 72;  // of the list

}  // namespace

OwnTemplatesBox::OwnTemplatesBox(const profile::Program& program,
                                 std::function<Result<document::LetterToKeep>()> present, QWidget* parent)
    : QGroupBox(tr("Your own"), parent),
      program_(program),
      present_(std::move(present)),
      own_(program.folders.Templates()),
      list_(new QListWidget(this)) {
  list_->setObjectName("OwnListBox");
  list_->setAccessibleName(tr("Your own templates"));
  list_->setMinimumHeight(kLeastHeight);
  new FirstKey(list_);
  new EmptyState(list_);
  auto* column = new QVBoxLayout(this);
  column->addWidget(list_, 1);
  BuildButtons();
  connect(list_, &QListWidget::itemSelectionChanged, this, [this] {
    Enable();
    emit ChosenChanged();
  });
  Enable();
}

void OwnTemplatesBox::BuildButtons() {
  auto* buttons = new QWidget(this);
  layout()->addWidget(buttons);
  auto* line = new FoldingLine(buttons, kGap);
  for (const auto& [name, text, action, needs_choice] :
       std::initializer_list<std::tuple<const char*, QString, void (OwnTemplatesBox::*)(), bool>>{
           {"KeepButton", tr("&Keep This Message…"), &OwnTemplatesBox::Keep, false},
           {"ImportButton", tr("&Import…"), &OwnTemplatesBox::Import, false},
           {"RenameButton", tr("&Rename…"), &OwnTemplatesBox::Rename, true},
           {"DeleteButton", tr("&Delete"), &OwnTemplatesBox::Delete, true},
           {"ExportButton", tr("E&xport…"), &OwnTemplatesBox::Export, true}}) {
    auto* button = new QPushButton(text, buttons);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, action);
    line->addWidget(button);
    (needs_choice ? of_chosen_ : of_nothing_).push_back(button);
  }
}

QString OwnTemplatesBox::Chosen() const {
  const auto chosen = list_->selectedItems();
  return chosen.isEmpty() ? QString() : chosen.front()->text();
}

void OwnTemplatesBox::ChooseNone() {
  const QSignalBlocker quiet(list_);
  list_->clearSelection();
  Enable();
}

void OwnTemplatesBox::Enable() {
  const bool is_free = !task_.is_running();
  for (QPushButton* button : of_nothing_) button->setEnabled(is_free);
  for (QPushButton* button : of_chosen_) button->setEnabled(is_free && !Chosen().isEmpty());
}

void OwnTemplatesBox::Fill(const QString& chosen) {
  const auto names = own_.List();
  {
    const QSignalBlocker quiet(list_);
    list_->clear();
    if (names) {
      for (const auto& name : *names) list_->addItem(ToQt(name));
    }
  }
  auto* empty = list_->findChild<EmptyState*>();
  empty->setText(names ? tr("None yet. Keep the message that you are writing, or import a letter.")
                       : tr("They cannot be read."));
  empty->setVisible(list_->count() == 0);
  const auto found = list_->findItems(chosen, Qt::MatchExactly | Qt::MatchCaseSensitive);
  if (!found.isEmpty()) {
    list_->setCurrentItem(found.front());
  } else if (list_->count() > 0) {
    list_->setCurrentRow(0, QItemSelectionModel::NoUpdate);
  }
  Enable();
  if (found.isEmpty()) emit ChosenChanged();
  if (!names) emit Failed(names.error());  // last: another choice ends what was told
}

void OwnTemplatesBox::Run(const QString& name, const QString& said,
                          std::function<Result<void>(const platform::CancelToken*)> work) {
  emit Said(progress());
  task_.Start([this, name, said, work = std::move(work)](const platform::CancelToken& cancel) -> std::function<void()> {
    return [this, name, said, done = work(&cancel)] {
      Fill(done && chooses_new_ ? name : Chosen());
      done ? emit Said(said) : emit Failed(done.error());
    };
  });
  Enable();
}

void OwnTemplatesBox::Keep() {
  TemplateNameForm form(program_.prompts, own_, tr("Keep as a Template"), {}, window());
  if (form.exec() != QDialog::Accepted) return;
  auto present = present_();
  if (!present) return emit Failed(present.error());
  Run(form.name(), tr("The message is kept as the template “%1”.").arg(form.name()),
      [own = own_, name = FromQt(form.name()), letter = *std::move(present),
       if_there = form.if_there()](const auto* cancel) { return own.Keep(name, letter, if_there, cancel); });
}

void OwnTemplatesBox::Import() {
  const auto files = program_.prompts.PickOpenFile({.title = "Import", .filter = document::kDocumentFilter});
  if (files.empty()) return;
  const fs::path& file = files.front();
  TemplateNameForm form(program_.prompts, own_, tr("Import a Template"), PathToQt(file.stem()), window());
  if (form.exec() != QDialog::Accepted) return;
  Run(form.name(), tr("%1 is kept as the template “%2”.").arg(PathToQt(file), form.name()),
      [own = own_, name = FromQt(form.name()), file, if_there = form.if_there(),
       folders = program_.folders](const auto* cancel) {
        const auto letter = document::ReadLetterToKeep(file, folders);
        return letter ? own.Keep(name, *letter, if_there, cancel) : Result<void>(letter.error());
      });
}

void OwnTemplatesBox::Rename() {
  const QString before = Chosen();
  TemplateNameForm form(program_.prompts, own_, tr("Rename the Template"), before, window());
  form.SetPresent(before);
  if (form.exec() != QDialog::Accepted || form.name() == before) return;
  const auto renamed = own_.Rename(FromQt(before), FromQt(form.name()), form.if_there());
  Fill(renamed ? form.name() : before);
  if (!renamed) return emit Failed(renamed.error());
  emit Said(tr("The template “%1” is now “%2”.").arg(before, form.name()));
}

void OwnTemplatesBox::Delete() {
  const QString name = Chosen();
  const auto question = Say("Are you sure you want to delete the template “{}”?", FromQt(name));
  if (program_.prompts.Ask(FromQt(InWords(question))) != platform::Answer::kYes) return;
  const auto removed = own_.Remove(FromQt(name));
  Fill(removed ? QString() : name);
  if (!removed) return emit Failed(removed.error());
  emit Said(tr("The template “%1” was deleted. Letters that were begun from it keep their pictures.").arg(name));
}

void OwnTemplatesBox::Export() {
  const QString name = Chosen();
  const fs::path file = program_.prompts.PickSaveFile({.title = "Export",
                                                       .filter = document::kDocumentFilter,
                                                       .name = FromQt(name + ".html"),
                                                       .ask_before_overwriting = true});
  if (file.empty()) return;
  const auto may_export = document::OwnTemplates::MayExportTo(file, program_.folders, program_.prompts);
  if (!may_export) return emit Failed(may_export.error());
  Run(name, tr("The template “%1” is in %2.").arg(name, PathToQt(file)),
      [own = own_, name = FromQt(name), file, folders = program_.folders](const auto* cancel) {
        return own.Export(name, folders, file, cancel);
      });
}

}  // namespace quillcast::desktop
