// The dialog that changes a row of the search results.
#pragma once

#include "desktop/recipients/recipient_entry_form.h"

namespace quillcast::desktop {

class RecipientModifyForm2 final : public RecipientEntryForm {
 public:
  RecipientModifyForm2(const profile::Program& program, const QString& group, std::int64_t key, QWidget* parent)
      : RecipientEntryForm("RecipientModifyForm2", RecipientEntryForm::tr("Modify Recipient"), program, group,
                           ChangeOf(key), parent) {
    ShowStored(key);
  }
};

}  // namespace quillcast::desktop
