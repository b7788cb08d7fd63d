// What the program is, and its version.
#pragma once

#include <QDialog>

namespace quillcast::desktop {

class AboutForm final : public QDialog {
  Q_OBJECT
 public:
  explicit AboutForm(QWidget* parent);
};

}  // namespace quillcast::desktop
