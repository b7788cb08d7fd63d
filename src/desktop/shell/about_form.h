// What the program is, what it stands on, and the system that it runs on, to be copied into a question.
#pragma once

#include <QDialog>
#include <vector>

#include "help/about_program.h"

namespace quillcast::desktop {

class AboutForm final : public QDialog {
  Q_OBJECT
 public:
  AboutForm(const profile::Folders& folders, const platform::Environment& environment, QWidget* parent);

 private:
  void BuildWindow();
  QWidget* MakeHeading();
  void Copy();

  const std::vector<help::Fact> facts_;
  const std::vector<help::Library> libraries_;
};

}  // namespace quillcast::desktop
