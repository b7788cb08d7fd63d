#include "desktop/widgets/notice_bar.h"

#include <QPushButton>
#include <algorithm>

namespace quillcast::desktop {

NoticeBar::NoticeBar(QWidget* parent) : NotePanel(NoteKind::kInformation, "NoticeBar", "NoticeLabel", parent) {
  hide();
}

// Who is at one of its buttons stays there where nothing is new.
bool NoticeBar::Shows(const QString& sentence, const std::vector<Offer>& offers) const {
  return !isHidden() && text() == sentence &&
         std::equal(offers.begin(), offers.end(), buttons_.begin(), buttons_.end(),
                    [](const Offer& offer, const QPushButton* button) { return offer.text == button->text(); });
}

// The button that was pressed may be among those that go, and a box that stands keeps them until it is closed.
void NoticeBar::Show(const QString& sentence, const std::vector<Offer>& offers) {
  if (Shows(sentence, offers)) return;
  for (QPushButton* button : buttons_) {
    button->hide();
    button->deleteLater();
  }
  buttons_.clear();
  SetText(sentence);
  for (const Offer& offer : offers) buttons_.push_back(AddOffer(offer.name, offer.text, offer.action));
  show();
}

}  // namespace quillcast::desktop
