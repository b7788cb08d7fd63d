// A strip above the message that says something and offers what can be done about it, without stopping anybody.
#pragma once

#include <QFrame>
#include <functional>
#include <utility>
#include <vector>

class QHBoxLayout;
class QLabel;

namespace quillcast::app {

class NoticeBar final : public QFrame {
  Q_OBJECT
 public:
  explicit NoticeBar(QWidget* parent);

  struct Offer {
    QString text;
    const char* name;  // of the button
    std::function<void()> action;
  };
  // Beside the sentence, at its right end; or below it on the left, where no button of another notice ever stands, for
  // what nobody may agree to with a click that was meant for another.
  enum class Place { kBeside, kBelow };
  void Show(const QString& sentence, const std::vector<Offer>& offers, Place place = Place::kBeside);
  QString text() const;

 private:
  QHBoxLayout* beside_;
  QHBoxLayout* below_;
  QLabel* sentence_;
  std::vector<QWidget*> buttons_;
};

}  // namespace quillcast::app
