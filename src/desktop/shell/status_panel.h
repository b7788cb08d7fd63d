// The first panel of the status bar: what there is to be told, for a while.
#pragma once

#include <QLabel>

class QTimer;

namespace quillcast::desktop {

class StatusPanel final : public QLabel {
  Q_OBJECT
 public:
  explicit StatusPanel(QWidget* parent);

  // Stands there for a quarter of a minute, or until the next sentence; an empty one ends it.
  void Say(const QString& sentence);
  // What stands there of that; empty for none.
  QString said() const;

 private:
  QTimer* end_;  // of the sentence that stands there
};

}  // namespace quillcast::desktop
