// The list of groups that a dialog chooses one from.
#pragma once

#include <QComboBox>

#include "desktop/widgets/qt_text.h"
#include "profile/program.h"
#include "recipients/recipient_store.h"

namespace quillcast::desktop {

// Those of the store, in their order; `chosen` is chosen, and none where it is not among them.
inline Result<void> FillGroupBox(QComboBox& box, const profile::Program& program, const QString& chosen) {
  const auto names = recipients::RecipientStore(program.folders.Database(), profile::kWindowPatience).ListGroupNames();
  if (!names) return names.error();
  for (const std::string& name : *names) box.addItem(ToQt(name));
  box.setCurrentIndex(box.findText(chosen));
  return {};
}

}  // namespace quillcast::desktop
