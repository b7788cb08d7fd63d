// Stands where a list, a report or a page has nothing to show yet: what will be there, and the next step to it.
#pragma once

#include <QAbstractScrollArea>
#include <QLabel>

namespace quillcast::desktop {

// Over the middle of what the area shows; a screen reader reads it with the area. Whoever fills the area hides it.
class EmptyState final : public QLabel {
  Q_OBJECT
 public:
  explicit EmptyState(QAbstractScrollArea* area, const QString& text = {});

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Place();
  void TakeColour();
  void Describe();

  QAbstractScrollArea* area_;
};

}  // namespace quillcast::desktop
