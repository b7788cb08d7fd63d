// The box of the account's password.
#pragma once

#include <QLineEdit>
#include <string>
#include <string_view>

#include "account/account_settings.h"
#include "platform/secret.h"

class QPushButton;

namespace quillcast::desktop {

// Where the password is not in the settings it says where it is; the one that was typed, and may be on its way into the
// keyring, stays aside meanwhile, so that choosing another place and coming back loses nothing. One that would go to
// another server or user than it was put aside for stands in the box again.
class PasswordBox final : public QLineEdit {
  Q_OBJECT
 public:
  explicit PasswordBox(QWidget* parent);

  // `kept_for` is whom the keyring has a password for: the box of another opens by itself.
  void Put(const account::AccountSettings& values, std::string_view kept_for);
  // What is to be saved: what is typed, or what stays aside.
  std::string Password() const;
  // Whether a password for the keyring is being typed, which is possible where it has none and once it is pressed.
  bool is_replacing() const { return replacing_; }
  // Enables the box for that; shown while the password is in the keyring.
  QPushButton* change_button() const { return change_; }

 signals:
  void Replacing();

 private:
  platform::Secret aside_;
  std::string whose_;  // server and user when it was put aside; for others it is shown
  QPushButton* change_;
  bool replacing_ = false;
  bool is_asked_to_ = false;  // by the button
};

}  // namespace quillcast::desktop
