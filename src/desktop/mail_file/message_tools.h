// What can be done with a message file that is shown.
#pragma once

#include <QDialog>
#include <array>
#include <filesystem>
#include <functional>

class QPushButton;

namespace quillcast::desktop {

class FormColumn;
class MessageView;

// What the buttons do with the file: each opens its dialog. All are set.
struct MessageTools {
  using Tool = std::function<void(const std::filesystem::path& file, QWidget* parent)>;
  Tool extract;
  Tool take_over;  // into the message that is being written
  Tool print;
};

// The last line of a dialog that shows one: a button for each, of use while the view shows a message, and the one that
// closes the dialog. The first is what Return presses in the view's lists.
class MessageToolRow final : public QObject {
  Q_OBJECT
 public:
  // `shown` gives the file that the view shows.
  MessageToolRow(MessageView& view, MessageTools tools, std::function<std::filesystem::path()> shown, QDialog* dialog);

  void AddTo(FormColumn* column) const;

 private:
  QPushButton* Add(const char* name, const QString& text, MessageTools::Tool tool, QDialog* dialog);

  std::function<std::filesystem::path()> shown_;
  std::array<QPushButton*, 3> buttons_;
  QPushButton* close_;
};

}  // namespace quillcast::desktop
