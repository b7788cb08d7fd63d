#include "desktop/widgets/notice_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace quillcast::desktop {

NoticeBar::NoticeBar(QWidget* parent) : QFrame(parent), line_(new QHBoxLayout(this)), sentence_(new QLabel(this)) {
  setObjectName("NoticeBar");
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::AlternateBase);
  line_->setContentsMargins(12, 6, 8, 6);
  sentence_->setWordWrap(true);
  sentence_->setTextFormat(Qt::PlainText);
  line_->addWidget(sentence_, 1);
  hide();
}

void NoticeBar::Show(const QString& sentence, const std::vector<Offer>& offers) {
  for (QWidget* button : buttons_) button->deleteLater();
  buttons_.clear();
  sentence_->setText(sentence);
  for (const Offer& offer : offers) {
    auto* button = new QPushButton(offer.text, this);
    button->setObjectName(offer.name);
    connect(button, &QPushButton::clicked, this, [action = offer.action] { action(); });
    line_->addWidget(button);
    buttons_.push_back(button);
  }
  show();
}

QString NoticeBar::text() const { return sentence_->text(); }

}  // namespace quillcast::desktop
