#include "desktop/recipients/groups_menu.h"

#include <QInputDialog>
#include <QTimer>
#include <memory>

#include "desktop/widgets/qt_text.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "recipients/group_checks.h"
#include "recipients/import/recipient_import.h"

namespace quillcast::desktop {
namespace {

QString OutcomeText(const recipients::ImportOutcome& outcome) {
  const auto& counts = outcome.counts;
  QStringList sentences;
  if (outcome.error) sentences << InWords(*outcome.error);
  if (!outcome.error || counts.added > 0) {
    sentences << Counted(counts.added, GroupsMenu::tr("1 address was added."),
                         GroupsMenu::tr("%1 addresses were added."));
  }
  if (!outcome.error) {
    sentences << Counted(counts.duplicates, GroupsMenu::tr("1 was there already."),
                         GroupsMenu::tr("%1 were there already."));
  }
  const auto troubles = recipients::ImportTroubles(outcome);
  for (const auto& trouble : troubles) sentences << InWords(trouble);
  if (!outcome.error && troubles.empty())
    sentences << GroupsMenu::tr("Names and other fields stayed in the file; “quillcast import --map” takes them.");
  return sentences.join(' ');
}

}  // namespace

GroupsMenu::GroupsMenu(const profile::Program& program, QWidget* parent)
    : QMenu(parent), program_(program), import_(new BackgroundTask(this)) {
  setObjectName("GroupsMenu");
  addAction(tr("&New Group…"), this, &GroupsMenu::AskForNewGroup)->setObjectName("NewGroupAction");
  addAction(tr("&Add Addresses from a File, without Names…"), this, &GroupsMenu::ImportRequested)
      ->setObjectName("AddAddressesAction");
}

void GroupsMenu::AskForNewGroup() {
  bool given = false;
  const QString name =
      QInputDialog::getText(parentWidget(), tr("New Group"), tr("Name of the group:"), QLineEdit::Normal, {}, &given);
  if (!given) return;
  recipients::RecipientStore store(program_.folders.Database(), profile::kWindowPatience);
  const auto complaint = recipients::MakeGroup(store, FromQt(name));
  if (!complaint) {
    emit Said(InWords(complaint.error()));
  } else if (*complaint) {
    program_.prompts.Warn((*complaint)->message);
  } else {
    emit Changed(name);
  }
}

void GroupsMenu::ImportInto(const QString& group) {
  if (is_importing()) {
    emit Said(tr("Another file is being read; try it again when that is done."));
    return;
  }
  const auto files = program_.prompts.PickOpenFile({.title = "Import", .filter = "All Files (*.*)|*.*"});
  if (files.empty() || !program_.prompts.Consent(recipients::kConsentQuestion)) return;
  emit Said(tr("Reading %1…").arg(PathToQt(files.front())));
  recipients::ImportRequest request;
  request.file = files.front();
  request.group = FromQt(group);
  const recipients::ImportPlaces places{program_.folders.Database(), program_.folders.ImportReport(),
                                        platform::LocaleCodeset()};
  import_->Start([this, request, places](const platform::CancelToken& cancel) {
    auto outcome = std::make_shared<recipients::ImportOutcome>(
        recipients::ImportRecipients(request, places, cancel, [](const recipients::ImportProgress&) {}));
    return [this, outcome] {
      emit Changed({});
      emit Said(OutcomeText(*outcome));
    };
  });
}

}  // namespace quillcast::desktop
