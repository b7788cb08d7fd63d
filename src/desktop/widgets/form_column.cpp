#include "desktop/widgets/form_column.h"

#include <QDialog>
#include <QEvent>
#include <QGroupBox>
#include <QPushButton>
#include <utility>

#include "desktop/widgets/form_grid.h"

namespace quillcast::desktop {
namespace {

constexpr int kMargin = 14;  // pixels
constexpr int kColumnSpacing = 10;

constexpr std::pair<QDialogButtonBox::StandardButton, const char*> kButtonNames[] = {
    {QDialogButtonBox::Ok, "OKButton"},
    {QDialogButtonBox::Cancel, "CancelButton"},
    {QDialogButtonBox::Close, "CloseButton"}};

// The toolkit's own passes the keyboard on to its first button whenever Tab comes to the box, and puts the box in the
// order anywhere between its buttons: Tab would come back to the first for ever. Here it comes to the buttons alone.
class ButtonRow final : public QDialogButtonBox {
 public:
  using QDialogButtonBox::QDialogButtonBox;

 protected:
  bool event(QEvent* event) override {
    const bool is_known = QDialogButtonBox::event(event);
    if (event->type() == QEvent::Show || event->type() == QEvent::StyleChange) setFocusProxy(nullptr);
    return is_known;
  }
};

}  // namespace

FormColumn::FormColumn(QWidget* window) : QVBoxLayout(window) {
  setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  setSpacing(kColumnSpacing);
}

FormGrid* FormColumn::AddGrid(int place) {
  auto* grid = new FormGrid(parentWidget(), place);
  addWidget(grid);
  return grid;
}

FormGrid* FormColumn::AddBox(const QString& title, int place) {
  auto* box = new QGroupBox(title, parentWidget());
  auto* grid = new FormGrid(box, place);
  (new QVBoxLayout(box))->addWidget(grid);
  addWidget(box);
  return grid;
}

void FormColumn::AddLine(const std::vector<QWidget*>& widgets, int stretch) {
  auto* line = new QHBoxLayout();
  for (QWidget* widget : widgets) {
    if (widget == nullptr) {
      line->addStretch(1);
    } else {
      LetFollow(widget);
      line->addWidget(widget);
    }
  }
  addLayout(line, stretch);
}

QDialogButtonBox* FormColumn::AddButtons(QDialogButtonBox::StandardButtons buttons) {
  auto* box = new ButtonRow(buttons, parentWidget());
  for (const auto& [which, name] : kButtonNames) {
    if (auto* button = box->button(which)) button->setObjectName(name);
  }
  addWidget(box);
  if (auto* dialog = qobject_cast<QDialog*>(parentWidget())) {
    QObject::connect(box, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(box, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  }
  return box;
}

// A widget is last in a window's order when it comes into it, so it goes out first.
void LetFollow(QWidget* widget) { widget->setParent(nullptr); }

}  // namespace quillcast::desktop
