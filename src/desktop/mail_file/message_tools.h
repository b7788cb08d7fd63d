// What can be done with a message file that is shown.
#pragma once

#include <QObject>
#include <array>
#include <filesystem>
#include <functional>

class QPushButton;
class QWidget;

namespace quillcast::desktop {

class MessageView;

// What the buttons do with the file: each opens its dialog. All are set.
struct MessageTools {
  using Tool = std::function<void(const std::filesystem::path& file, QWidget* parent)>;
  Tool extract;
  Tool take_over;  // into the message that is being written
  Tool print;
};

// Their buttons, of use while the view shows a message. The first is what Return presses in the view's lists.
class MessageToolButtons final : public QObject {
  Q_OBJECT
 public:
  // `shown` gives the file that the view shows.
  MessageToolButtons(MessageView& view, MessageTools tools, std::function<std::filesystem::path()> shown,
                     QWidget* dialog);

  const std::array<QPushButton*, 3>& buttons() const { return buttons_; }

 private:
  QPushButton* Add(const char* name, const QString& text, MessageTools::Tool tool, QWidget* dialog);

  std::function<std::filesystem::path()> shown_;
  std::array<QPushButton*, 3> buttons_;
};

}  // namespace quillcast::desktop
