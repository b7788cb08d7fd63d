#include "desktop/recipients/kept_mapping_box.h"

#include <QPushButton>
#include <QSignalBlocker>

#include "desktop/recipients/mapping_keep_form.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

QPushButton* OfferButton(const char* name, const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  return button;
}

}  // namespace

KeptMappingBox::KeptMappingBox(const profile::Program& program, StatusLine& status, QWidget* parent)
    : QComboBox(parent),
      program_(program),
      status_(status),
      apply_(OfferButton("ApplyMappingButton", tr("Appl&y"), parent)),
      keep_(OfferButton("KeepMappingButton", tr("Keep A&s…"), parent)),
      remove_(OfferButton("RemoveMappingButton", tr("&Remove"), parent)) {
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(12);
  connect(apply_, &QPushButton::clicked, this, &KeptMappingBox::Apply);
  connect(keep_, &QPushButton::clicked, this, &KeptMappingBox::KeepAsked);
  connect(remove_, &QPushButton::clicked, this, &KeptMappingBox::Remove);
  connect(this, &QComboBox::currentIndexChanged, this, &KeptMappingBox::EnableButtons);
  Fill({});
}

std::vector<QWidget*> KeptMappingBox::buttons() const { return {apply_, keep_, remove_}; }

void KeptMappingBox::EnableAll(bool enable) {
  is_enabled_ = enable;
  EnableButtons();
}

void KeptMappingBox::EnableButtons() {
  setEnabled(is_enabled_ && count() > 0);
  keep_->setEnabled(is_enabled_);
  apply_->setEnabled(is_enabled_ && currentIndex() >= 0);
  remove_->setEnabled(is_enabled_ && (currentIndex() >= 0 || are_damaged_));
}

void KeptMappingBox::Fill(const QString& chosen) {
  {
    const QSignalBlocker quiet(this);
    clear();
    const auto all = recipients::ListMappingNames(program_.settings);
    if (all) {
      for (const std::string& name : *all) addItem(ToQt(name));
    } else {
      status_.Fail(all.error());
    }
    are_damaged_ = !all && all.error().failure == Failure::kBadData;
    setCurrentIndex(findText(chosen, Qt::MatchFixedString));
    setPlaceholderText(!all           ? tr("They cannot be read")
                       : count() == 0 ? tr("None is kept yet")
                                      : tr("Choose a mapping"));
  }
  EnableButtons();
}

// Another program may have removed it since.
void KeptMappingBox::Apply() {
  const auto kept = recipients::FindMapping(program_.settings, FromQt(currentText()));
  if (kept) {
    emit Applied(*kept);
    return;
  }
  status_.Fail(kept.error());
  Fill(currentText());  // one that is damaged stays chosen, to be removed
}

void KeptMappingBox::Keep(recipients::KeptMapping mapping, const QString& suggestion) {
  MappingKeepForm form(program_, currentIndex() >= 0 ? currentText() : suggestion, this);
  if (form.exec() != QDialog::Accepted) return;
  mapping.name = FromQt(form.name());
  if (const auto kept = recipients::KeepMapping(program_.settings, mapping); !kept) return status_.Fail(kept.error());
  Fill(form.name());
  status_.Say(tr("The mapping is kept as “%1”.").arg(form.name()));
}

void KeptMappingBox::RemoveDamaged() {
  const auto forgotten = recipients::ForgetDamagedMappings(program_.settings);
  if (!forgotten) return status_.Fail(forgotten.error());
  status_.Say(*forgotten ? tr("No mapping is kept any more.")
                         : tr("The kept mappings can be read again; none was removed."));
}

void KeptMappingBox::Remove() {
  const QString name = currentText();
  const auto question = are_damaged_ ? Sentence("The kept mappings are damaged. Would you like to remove all of them?")
                                     : Say("Would you like to remove the mapping “{}”?", FromQt(name));
  if (program_.prompts.Ask(FromQt(InWords(question))) != platform::Answer::kYes) return;
  if (are_damaged_) {
    RemoveDamaged();
  } else if (const auto deleted = recipients::DeleteMapping(program_.settings, FromQt(name)); !deleted) {
    status_.Fail(deleted.error());
  } else {
    status_.Say(tr("The mapping “%1” is no longer kept.").arg(name));
  }
  Fill({});
  (count() > 0 ? static_cast<QWidget*>(this) : keep_)->setFocus();
}

}  // namespace quillcast::desktop
