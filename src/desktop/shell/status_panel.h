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
  // Stands there until another takes its place, behind whatever else is said, where that does not hold it; an empty one
  // ends it.
  void Keep(const QString& sentence);
  // What is said; empty for nothing.
  const QString& said() const { return said_; }

 private:
  void Show();

  QTimer* end_;  // of what is said
  QString said_;
  QString kept_;
};

}  // namespace quillcast::desktop
