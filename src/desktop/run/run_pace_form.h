// How fast one run goes, over how many connections, and how often it tries again: chosen for it alone.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

#include "platform/clock.h"
#include "platform/result.h"
#include "run/pace/pace_rules.h"

class QLineEdit;

namespace quillcast::desktop {

class PacePage;
class StatusLine;

class RunPaceForm final : public QDialog {
  Q_OBJECT
 public:
  // What counts where nothing is chosen; asked again once the account may have changed.
  using Otherwise = std::function<Result<run::PaceTexts>()>;
  // `chosen` before; its beginning is read by `clock`. `change_account` opens the account at its page of the pace, and
  // returns when that has closed; where it is none, no button offers that.
  RunPaceForm(Otherwise otherwise, const run::PaceTexts& chosen, std::function<void(QWidget*)> change_account,
              const platform::Clock& clock, QWidget* parent);

  // What the run is told, once the dialog was accepted; what is left as it was follows the account.
  const run::PaceTexts& chosen() const { return chosen_; }

 public slots:
  void accept() override;

 private:
  void Show(const run::PaceTexts& chosen);
  void Put(const run::PaceTexts& texts);
  run::PaceTexts Texts() const;
  // What the run would be told.
  run::PaceTexts Typed() const;
  // Why the first field that cannot be read cannot; the focus goes there where it is asked to.
  std::optional<Error> Fault(bool goes_there) const;
  void ChangeAccount();
  void LookAgain();

  const Otherwise otherwise_;
  const std::function<void(QWidget*)> change_account_;
  run::PaceTexts was_;  // as the fields show what counts otherwise
  run::PaceTexts chosen_;
  const platform::Clock& clock_;
  PacePage* page_;
  QLineEdit* begin_;
  StatusLine* status_;
  bool tells_fault_ = false;  // the status line does, of what stands in a field
};

}  // namespace quillcast::desktop
