#include "desktop/widgets/notice_bar.h"

#include <QPushButton>

namespace quillcast::desktop {

NoticeBar::NoticeBar(QWidget* parent) : NotePanel(NoteKind::kInformation, "NoticeBar", "NoticeLabel", parent) {
  hide();
}

// The button that was pressed may be among those that go, and a box that stands keeps them until it is closed.
void NoticeBar::Show(const QString& sentence, const std::vector<Offer>& offers) {
  for (QWidget* button : buttons_) {
    button->hide();
    button->deleteLater();
  }
  buttons_.clear();
  SetText(sentence);
  for (const Offer& offer : offers) buttons_.push_back(AddOffer(offer.name, offer.text, offer.action));
  show();
}

}  // namespace quillcast::desktop
