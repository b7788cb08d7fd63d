#include "sending/ui/pictures_panel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>
#include <utility>

#include "platform/text.h"
#include "platform/ui/background_task.h"
#include "platform/ui/qt_text.h"
#include "sending/preview_look.h"

namespace quillcast::sending {
namespace {

using platform::ToQt;

constexpr std::size_t kLongestShown = 300;
constexpr qsizetype kMostInTip = 40;

}  // namespace

PicturesPanel::PicturesPanel(const app::SettingsStore& settings, QWidget* parent)
    : QFrame(parent),
      settings_(settings),
      task_(new platform::BackgroundTask(this)),
      text_(new QLabel(this)),
      take_(new QPushButton(tr("Ta&ke along"), this)),
      leave_(new QPushButton(tr("&Leave out"), this)) {
  setObjectName("PicturesPanel");
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::AlternateBase);
  text_->setObjectName("PicturesLabel");
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  take_->setObjectName("TakePicturesButton");
  leave_->setObjectName("LeavePicturesButton");
  // Enter, pressed for the dialog's own button, is no answer.
  take_->setAutoDefault(false);
  leave_->setAutoDefault(false);
  // Below the question on the left, where no other panel has a button: no click that was meant for another agrees.
  auto* line = new QHBoxLayout();
  line->addWidget(leave_);
  line->addWidget(take_);
  line->addStretch(1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(12, 6, 8, 6);
  column->addWidget(text_);
  column->addLayout(line);
  connect(take_, &QPushButton::clicked, this, [this] { Answer(true); });
  connect(leave_, &QPushButton::clicked, this, [this] { Answer(false); });
  hide();
}

void PicturesPanel::LookAt(compose::MessageDocument document) {
  document_ = std::move(document);
  settled_ = false;
  task_->Start([this, looked = document_](const platform::CancelToken&) {
    auto pictures = std::make_shared<Result<RelatedPictures>>(LookForPictures(looked, settings_));
    return [this, pictures] { Show(*pictures); };
  });
}

// A failure is that of the settings, which whoever sends will hear of.
void PicturesPanel::Show(const Result<RelatedPictures>& pictures) {
  asked_ = pictures ? PicturesToAskFor(pictures->foreign) : std::vector<std::filesystem::path>();
  settled_ = asked_.empty();
  if (!settled_) {
    text_->setText(ToQt(PictureQuestion(asked_)));
    QStringList all;
    for (const auto& file : asked_) all << ToQt(platform::Printable(file.string(), kLongestShown));
    text_->setToolTip(all.mid(0, kMostInTip).join('\n'));
  }
  setVisible(!settled_);
  emit Known(settled_);
}

void PicturesPanel::Answer(bool take) {
  for (const auto& file : asked_) {
    if (take) {
      document_.picture_places.AllowFile(file);
    } else {
      document_.picture_places.LeaveOut(file);
    }
  }
  emit Answered(document_.picture_places);
  LookAt(std::move(document_));
}

}  // namespace quillcast::sending
