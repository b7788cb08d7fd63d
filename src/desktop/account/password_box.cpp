#include "desktop/account/password_box.h"

#include <QAction>
#include <QPushButton>

#include "account/password_place.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

using account::PasswordPlace;

PasswordBox::PasswordBox(QWidget* parent) : QLineEdit(parent), change_(new QPushButton(tr("Chan&ge"), parent)) {
  setEchoMode(QLineEdit::Password);
  auto* reveal = addAction(Icon("preview"), QLineEdit::TrailingPosition);
  reveal->setCheckable(true);
  reveal->setToolTip(tr("Show the password"));
  connect(reveal, &QAction::toggled, this,
          [this](bool shown) { setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password); });
  change_->setObjectName("ChangePasswordButton");
  change_->setToolTip(tr("Type another password, which takes the place of the one in the keyring"));
  connect(change_, &QPushButton::clicked, this, [this] {
    replacing_ = is_asked_to_ = true;
    aside_ = platform::Secret();
    emit Replacing();
    setFocus();
  });
}

void PasswordBox::Put(const account::AccountSettings& values, std::string_view kept_for) {
  const std::string& password = values[account::AccountKey::kPassword];
  const PasswordPlace place = account::PlaceOfPassword(values);
  const bool is_kept = values.IsOn(account::AccountKey::kAuth) && place == PasswordPlace::kKeyring;
  const bool lacks = account::KeyringLacks(values, kept_for);
  is_asked_to_ = is_asked_to_ && is_kept;
  const bool goes_on = replacing_ && (is_asked_to_ || !password.empty());
  const std::string whom = account::WhomOf(values);
  if (password.empty() || password != aside_.view()) whose_ = whom;
  replacing_ = is_kept && (lacks || goes_on || whose_ != whom);
  change_->setVisible(is_kept);
  change_->setEnabled(!replacing_);
  const bool types_here = place == PasswordPlace::kSettings || replacing_;
  aside_ = types_here ? platform::Secret() : platform::Secret(password);
  const QString shown = types_here ? ToQt(password) : QString();
  if (text() != shown) setText(shown);
  setPlaceholderText(replacing_ && !lacks ? tr("the new password")
                                          : InWords(account::PasswordPlaceText(values, kept_for)));
}

std::string PasswordBox::Password() const { return text().isEmpty() ? std::string(aside_.view()) : FromQt(text()); }

}  // namespace quillcast::desktop
