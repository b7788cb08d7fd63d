#include "desktop/shell/group_field.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QTimer>
#include <utility>

#include "desktop/widgets/folding_line.h"
#include "desktop/widgets/qt_text.h"
#include "recipients/recipient_store.h"

namespace quillcast::desktop {
namespace {

constexpr int kPauseBeforeLoading = 1000;  // milliseconds
constexpr int kGap = 6;                    // pixels
constexpr int kNarrowestBox = 140;

}  // namespace

GroupField::GroupField(const profile::Program& program, QWidget* parent)
    : QWidget(parent),
      program_(program),
      refresh_(new BackgroundTask(this)),
      box_(new QComboBox(this)),
      count_(new QLabel(this)) {
  box_->setPlaceholderText(tr("Choose a group"));
  count_->setObjectName("GroupCountLabel");
  setFocusProxy(box_);
  box_->setMinimumWidth(kNarrowestBox);
  box_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  auto* line = new FoldingLine(this, kGap);
  line->addWidget(box_);
  line->addWidget(count_);
  connect(box_, &QComboBox::currentIndexChanged, this, &GroupField::ShowCount);
  connect(box_, &QComboBox::currentIndexChanged, this, &GroupField::Changed);
}

QString GroupField::Group() const { return box_->currentText(); }

bool GroupField::HasGroups() const { return box_->count() > 0; }

void GroupField::Choose(const QString& group) { box_->setCurrentIndex(box_->findText(group)); }

void GroupField::Load(const QString& chosen) {
  if (!chosen.isEmpty()) wanted_ = chosen;
  const auto names = recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience).ListGroupNames();
  if (!names && names.error().failure == Failure::kTryAgain) {
    LoadAgain(InWords(names.error()));
    return;
  }
  if (!names) emit Trouble(InWords(names.error()));
  const QString wanted = std::exchange(wanted_, {});
  ShowGroups(names ? *names : std::vector<std::string>(), wanted.isEmpty() ? box_->currentText() : wanted);
  ShowCount();
}

void GroupField::ShowGroups(const std::vector<std::string>& names, const QString& chosen) {
  ++loads_;
  const QString before = box_->currentText();
  {
    const QSignalBlocker quiet(box_);  // what is chosen on the way was chosen by nobody
    box_->clear();
    for (const auto& name : names) box_->addItem(ToQt(name));
    box_->setCurrentIndex(box_->findText(chosen));
  }
  if (box_->currentText() != before) emit Changed();
}

void GroupField::Refresh() {
  refreshes_again_ = refresh_->is_running();  // it may have read the names before the latest was made
  if (refreshes_again_) return;
  refresh_->Start([this, file = program_.folders.Database(), chosen = box_->currentText(),
                   loads = loads_](const platform::CancelToken& cancel) {
    const recipients::RecipientStore store(file, {.cancel = &cancel});
    const auto names = store.ListGroupNames();
    const auto count = store.CountRecipients(FromQt(chosen));
    return [this, names, count, chosen, loads] {
      if (std::exchange(refreshes_again_, false)) {
        Refresh();
        return;
      }
      const bool is_old = loads != loads_ || chosen != box_->currentText() || box_->view()->isVisible();
      if (!names || !count || is_old) return;  // what cannot be read is told when it is needed
      QStringList shown;
      for (int i = 0; i < box_->count(); ++i) shown << box_->itemText(i);
      QStringList stored;
      for (const auto& name : *names) stored << ToQt(name);
      if (shown != stored) ShowGroups(*names, chosen);
      ShowTotal(*count);
    };
  });
}

void GroupField::ShowCount() {
  if (box_->currentIndex() < 0) {
    ShowTotal(0);
    return;
  }
  auto count = recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience)
                   .CountRecipients(FromQt(box_->currentText()));
  if (!count && count.error().failure == Failure::kTryAgain) {
    count_->clear();
    LoadAgain(InWords(count.error()));
    return;
  }
  ShowTotal(IgnoreErrors(std::move(count), 0));
}

void GroupField::ShowTotal(std::int64_t recipients) {
  count_->setVisible(box_->currentIndex() >= 0);
  count_->setText(box_->currentIndex() < 0 ? QString() : Counted(recipients, tr("1 recipient"), tr("%1 recipients")));
}

void GroupField::LoadAgain(const QString& why) {
  emit Trouble(why);
  if (!std::exchange(loads_again_, true)) {
    QTimer::singleShot(kPauseBeforeLoading, this, [this] {
      loads_again_ = false;
      Load();
    });
  }
}

}  // namespace quillcast::desktop
