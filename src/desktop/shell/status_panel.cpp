#include "desktop/shell/status_panel.h"

#include <QTimer>

#include "desktop/widgets/qt_text.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {
namespace {

constexpr int kSentenceTime = 15000;  // milliseconds

}  // namespace

StatusPanel::StatusPanel(QWidget* parent) : QLabel(parent), end_(new QTimer(this)) {
  end_->setSingleShot(true);
  end_->setInterval(kSentenceTime);
  connect(end_, &QTimer::timeout, this, [this] { Say({}); });
  setObjectName("StatusPanel1");
  setText(Translated(profile::kStatusPanels[0]));
  setTextFormat(Qt::PlainText);
  setWordWrap(true);  // a long sentence makes no window wider
}

void StatusPanel::Say(const QString& sentence) {
  said_ = sentence;
  Show();
  if (sentence.isEmpty()) return end_->stop();
  end_->start();
}

void StatusPanel::Keep(const QString& sentence) {
  kept_ = sentence;
  Show();
}

void StatusPanel::Show() {
  const bool is_said = said_.contains(kept_);  // as nothing is
  const QString both = is_said ? said_ : (said_ + ' ' + kept_).trimmed();
  setText(both.isEmpty() ? Translated(profile::kStatusPanels[0]) : both);
}

}  // namespace quillcast::desktop
