#include "desktop/run/pictures_panel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>
#include <utility>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"
#include "run/prepared_run.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLongestShown = 300;
constexpr qsizetype kMostInTip = 40;

}  // namespace

PicturesPanel::PicturesPanel(const profile::Program& program, QWidget* parent)
    : QFrame(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      text_(new QLabel(this)),
      take_(new QPushButton(tr("Ta&ke along"), this)),
      leave_(new QPushButton(tr("&Leave out"), this)),
      again_(new QPushButton(tr("Look again"), this)) {
  setObjectName("PicturesPanel");
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::AlternateBase);
  text_->setObjectName("PicturesLabel");
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  take_->setObjectName("TakePicturesButton");
  leave_->setObjectName("LeavePicturesButton");
  again_->setObjectName("LookAgainButton");
  // Enter, pressed for the dialog's own button, is no answer.
  for (QPushButton* button : {leave_, take_, again_}) button->setAutoDefault(false);
  // Below the question on the left, where no other panel has a button: no click that was meant for another agrees.
  auto* line = new QHBoxLayout();
  line->addWidget(leave_);
  line->addWidget(take_);
  line->addWidget(again_);
  line->addStretch(1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(12, 6, 8, 6);
  column->addWidget(text_);
  column->addLayout(line);
  connect(take_, &QPushButton::clicked, this, [this] { Answer(true); });
  connect(leave_, &QPushButton::clicked, this, [this] { Answer(false); });
  connect(again_, &QPushButton::clicked, this, [this] { LookAt(std::move(document_)); });
  hide();
}

void PicturesPanel::DropLetters() {
  for (QPushButton* button : {take_, leave_, again_}) button->setText(button->text().remove('&'));
}

void PicturesPanel::LookAt(document::MessageDocument document) {
  document_ = std::move(document);
  settled_ = false;
  task_->Start([this, &program = program_, looked = document_](const platform::CancelToken& cancel) {
    auto prepared = run::Prepare(looked, run::ChosenGroup(), run::PlaceOf(program, cancel));
    auto pictures = std::make_shared<Result<message::RelatedPictures>>(prepared.LookForPictures());
    return [this, pictures] { Show(*pictures); };
  });
}

void PicturesPanel::Show(const Result<message::RelatedPictures>& pictures) {
  QStringList all;
  if (pictures) {
    asked_ = message::PicturesToAskFor(pictures->foreign);
    for (const auto& file : asked_) all << ToQt(platform::Printable(file.string(), kLongestShown));
  }
  settled_ = pictures && asked_.empty();
  text_->setText(pictures ? InWords(message::PictureQuestion(asked_)) : InWords(pictures.error()));
  text_->setToolTip(all.mid(0, kMostInTip).join('\n'));
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
