// The fields of the pace, the connections and the retries: the account's, or those of one run.
#pragma once

#include <QWidget>

#include "account/account_settings.h"
#include "run/pace/pace_rules.h"

namespace quillcast::desktop {

class FormGrid;

// Its controls have the names by which the account's dialog finds those of all keys.
class PacePage final : public QWidget {
  Q_OBJECT
 public:
  explicit PacePage(QWidget* parent);

  run::PaceTexts Texts() const;
  // "none" is shown as what it means, an empty field.
  void Put(const run::PaceTexts& texts);
  void FocusOn(account::AccountKey key);

 signals:
  void Changed();

 private:
  void AddLine(FormGrid* rows, account::AccountKey key, const QString& label, const QString& example);
};

}  // namespace quillcast::desktop
