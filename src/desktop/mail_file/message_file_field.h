// The message file of a dialog: the box with its path and the button that chooses one. A file that is dropped on the
// dialog goes into the box too.
#pragma once

#include <QObject>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/prompts.h"

class QLineEdit;
class QPushButton;
class QWidget;

namespace quillcast::desktop {

class FormGrid;

class MessageFileField final : public QObject {
  Q_OBJECT
 public:
  // `title` is that of the file dialog; `dialog` owns this.
  MessageFileField(platform::Prompts& prompts, std::string title, QWidget* dialog);

  // Is asked of a file that was chosen; one that may not be taken leaves the box as it is.
  void AskOfChosen(std::function<bool(const std::filesystem::path& file)> may_be_taken);

  // The row "FilePathTextBox" with "FilePathButton" beside it.
  void AddTo(FormGrid* grid);

  QLineEdit* box() const { return box_; }
  std::filesystem::path path() const;
  // Both controls, and whether files may be dropped.
  void SetEnabled(bool is_enabled);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Choose();

  platform::Prompts& prompts_;
  std::string title_;
  std::function<bool(const std::filesystem::path& file)> may_be_taken_;
  QLineEdit* box_;
  QPushButton* button_;
};

}  // namespace quillcast::desktop
