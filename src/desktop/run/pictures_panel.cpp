#include "desktop/run/pictures_panel.h"

#include <QPushButton>
#include <utility>

#include "desktop/run/ask_prepared.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"
#include "run/prepared_run.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLongestShown = 300;
constexpr qsizetype kMostInTip = 40;

}  // namespace

// Its buttons are below the question on the left, where no other panel has any: no click that was meant for another
// agrees.
PicturesPanel::PicturesPanel(const profile::Program& program, QWidget* parent)
    : NotePanel(NoteKind::kWarning, "PicturesPanel", "PicturesLabel", parent, OfferPlace::kBelow),
      program_(program),
      task_(new BackgroundTask(this)),
      leave_(AddOffer("LeavePicturesButton", tr("&Leave out"), [this] { Answer(false); })),
      take_(AddOffer("TakePicturesButton", tr("Ta&ke along"), [this] { Answer(true); })),
      again_(AddOffer("LookAgainButton", tr("Look again"), [this] { LookAt(std::move(document_)); })) {
  hide();
}

void PicturesPanel::DropLetters() {
  for (QPushButton* button : {take_, leave_, again_}) button->setText(button->text().remove('&'));
}

void PicturesPanel::LookAt(document::MessageDocument document) {
  document_ = std::move(document);
  settled_ = false;
  AskPrepared(
      task_, program_, document_, run::ChosenGroup(),
      [](run::PreparedRun& prepared) { return prepared.LookForPictures(); },
      [this](const Result<message::RelatedPictures>& pictures) { Show(pictures); });
}

void PicturesPanel::Show(const Result<message::RelatedPictures>& pictures) {
  QStringList all;
  if (pictures) {
    asked_ = message::PicturesToAskFor(pictures->foreign);
    for (const auto& file : asked_) all << ToQt(platform::Printable(file.string(), kLongestShown));
  }
  settled_ = pictures && asked_.empty();
  SetText(pictures ? InWords(message::PictureQuestion(asked_)) : InWords(pictures.error()));
  setToolTip(PlainTip(all.mid(0, kMostInTip).join('\n')));
  for (QPushButton* answer : {take_, leave_}) answer->setVisible(static_cast<bool>(pictures));
  again_->setVisible(!pictures);
  setVisible(!settled_);
  emit Known(settled_);
}

void PicturesPanel::Answer(bool take) {
  document_.picture_places.Answer(asked_, take);
  emit Answered(asked_, take);
  LookAt(std::move(document_));
}

}  // namespace quillcast::desktop
