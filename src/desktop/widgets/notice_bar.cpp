#include "desktop/widgets/notice_bar.h"

#include <QApplication>
#include <QPushButton>
#include <algorithm>
#include <utility>

namespace quillcast::desktop {

NoticeBar::NoticeBar(QWidget* parent) : NotePanel(NoteKind::kInformation, "NoticeBar", "NoticeLabel", parent) {
  hide();
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget* old, QWidget* now) {
    if (old != nullptr && isAncestorOf(now) && !isAncestorOf(old) && old->window() == window()) before_ = old;
  });
}

bool NoticeBar::HasKeyboard() const { return isAncestorOf(window()->focusWidget()); }

// Else it would go to whatever comes next, which nobody has asked for.
void NoticeBar::GiveKeyboardBack() {
  if (before_ != nullptr && before_->isVisible() && before_->isEnabled()) before_->setFocus();
}

void NoticeBar::setVisible(bool visible) {
  const bool goes_with_it = !visible && HasKeyboard();
  NotePanel::setVisible(visible);
  if (goes_with_it) GiveKeyboardBack();
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
  const bool goes_with_them = HasKeyboard();
  for (QPushButton* button : buttons_) {
    button->hide();
    button->deleteLater();
  }
  buttons_.clear();
  SetText(sentence);
  QWidget* last = this;
  for (const Offer& offer : offers) {
    buttons_.push_back(AddOffer(offer.name, offer.text, offer.action));
    setTabOrder(std::exchange(last, buttons_.back()), buttons_.back());  // not behind all that the window got before
  }
  show();
  if (goes_with_them) GiveKeyboardBack();
}

}  // namespace quillcast::desktop
