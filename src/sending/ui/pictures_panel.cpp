#include "sending/ui/pictures_panel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <memory>
#include <utility>

#include "platform/ui/background_task.h"
#include "platform/ui/qt_text.h"
#include "sending/preview_look.h"

namespace quillcast::sending {

using platform::ToQt;

PicturesPanel::PicturesPanel(const app::SettingsStore& settings, QWidget* parent)
    : QFrame(parent),
      settings_(settings),
      task_(new platform::BackgroundTask(this)),
      text_(new QLabel(this)),
      take_(new QPushButton(tr("&Take them along"), this)),
      leave_(new QPushButton(tr("&Leave them out"), this)) {
  setObjectName("PicturesPanel");
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::AlternateBase);
  text_->setObjectName("PicturesLabel");
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  take_->setObjectName("TakePicturesButton");
  leave_->setObjectName("LeavePicturesButton");
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(12, 6, 8, 6);
  line->addWidget(text_, 1);
  line->addWidget(take_);
  line->addWidget(leave_);
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
  QStringList lines;
  asked_.clear();
  if (pictures) {
    asked_ = PicturesToAskFor(pictures->foreign);
    if (!pictures->pictures.empty()) lines << ToQt(SumUp(pictures->pictures));
    if (!asked_.empty()) lines << ToQt(PictureQuestion(asked_));
    QStringList all;
    for (const auto& line : ListPictures(pictures->pictures, pictures->foreign)) all << ToQt(line);
    text_->setToolTip(all.join('\n'));
  }
  settled_ = asked_.empty();
  text_->setText(lines.join('\n'));
  take_->setVisible(!settled_);
  leave_->setVisible(!settled_);
  setVisible(!lines.isEmpty());
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
