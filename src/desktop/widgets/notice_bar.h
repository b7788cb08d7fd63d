// A strip above the message that says something and offers what can be done about it, without stopping anybody.
#pragma once

#include <QFrame>
#include <functional>
#include <utility>
#include <vector>

class QHBoxLayout;
class QLabel;

namespace quillcast::desktop {

class NoticeBar final : public QFrame {
  Q_OBJECT
 public:
  explicit NoticeBar(QWidget* parent);

  struct Offer {
    QString text;
    const char* name;  // of the button
    std::function<void()> action;
  };
  void Show(const QString& sentence, const std::vector<Offer>& offers);
  QString text() const;

 private:
  QHBoxLayout* line_;
  QLabel* sentence_;
  std::vector<QWidget*> buttons_;
};

}  // namespace quillcast::desktop
