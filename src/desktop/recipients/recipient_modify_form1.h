// The dialog that changes the row selected in the group manager.
#pragma once

#include "desktop/recipients/recipient_entry_form.h"

namespace quillcast::desktop {

class RecipientModifyForm1 final : public RecipientEntryForm {
 public:
  RecipientModifyForm1(const profile::Program& program, const QString& group, std::int64_t key, QWidget* parent)
      : RecipientEntryForm("RecipientModifyForm1", RecipientEntryForm::tr("Modify Recipient"), program, group,
                           ChangeOf(key), parent) {
    ShowStored(key);
  }
};

}  // namespace quillcast::desktop
