// The dialog that adds a recipient to a group.
#pragma once

#include "desktop/recipients/recipient_entry_form.h"

namespace quillcast::desktop {

class RecipientAddForm final : public RecipientEntryForm {
 public:
  RecipientAddForm(const profile::Program& program, const QString& group, QWidget* parent)
      : RecipientEntryForm("RecipientAddForm", RecipientEntryForm::tr("Add Recipient"), program, group,
                           recipients::AddNewRecipient, parent) {}
};

}  // namespace quillcast::desktop
