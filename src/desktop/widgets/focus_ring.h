// A ring round the control that has the keyboard, to be seen in every theme. Styles draw such a thing faintly, and
// round some controls not at all.
#pragma once

#include <QPointer>
#include <QWidget>

namespace quillcast::desktop {

// Lies over what is round the control, and goes with the window that it stood in last.
class FocusRing final : public QWidget {
  Q_OBJECT
 public:
  explicit FocusRing(QWidget* parent);

  void StandRound(QWidget* control);
  // After something moved.
  void Place();
  const QWidget* control() const { return control_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QPointer<QWidget> control_;
};

// From here on. It stays away from the mouse: who clicks knows where. The first key brings it back.
void ShowFocusRing();

}  // namespace quillcast::desktop
