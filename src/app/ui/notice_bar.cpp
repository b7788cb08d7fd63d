#include "app/ui/notice_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillcast::app {

NoticeBar::NoticeBar(QWidget* parent)
    : QFrame(parent), beside_(new QHBoxLayout()), below_(new QHBoxLayout()), sentence_(new QLabel(this)) {
  setObjectName("NoticeBar");
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::AlternateBase);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(12, 6, 8, 6);
  column->addLayout(beside_);
  column->addLayout(below_);
  below_->addStretch(1);
  sentence_->setWordWrap(true);
  sentence_->setTextFormat(Qt::PlainText);
  beside_->addWidget(sentence_, 1);
  hide();
}

void NoticeBar::Show(const QString& sentence, const std::vector<Offer>& offers, Place place) {
  for (QWidget* button : buttons_) button->deleteLater();
  buttons_.clear();
  sentence_->setText(sentence);
  for (const Offer& offer : offers) {
    auto* button = new QPushButton(offer.text, this);
    button->setObjectName(offer.name);
    connect(button, &QPushButton::clicked, this, [action = offer.action] { action(); });
    if (place == Place::kBeside) {
      beside_->addWidget(button);
    } else {
      below_->insertWidget(below_->count() - 1, button);
    }
    buttons_.push_back(button);
  }
  show();
}

QString NoticeBar::text() const { return sentence_->text(); }

}  // namespace quillcast::app
