#include "desktop/shell/document_label.h"

#include <QMenuBar>
#include <QStyle>
#include <QStyleOptionMenuItem>

#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr int kWidest = 220;  // pixels, of the name

}  // namespace

DocumentLabel::DocumentLabel(QWidget* parent) : QLabel(parent) {
  setObjectName("DocumentLabel");
  setTextFormat(Qt::PlainText);
  setContentsMargins(10, 0, 10, 0);
  Refresh();
}

void DocumentLabel::ShowName(const std::filesystem::path& file) {
  file_ = file;
  Refresh();
}

void DocumentLabel::ShowChanged(bool is_changed) {
  is_changed_ = is_changed;
  Refresh();
}

QSize DocumentLabel::sizeHint() const {
  const QSize size = QLabel::sizeHint();
  if (parentWidget() == nullptr) return size;
  QStyleOptionMenuItem menu;
  menu.initFrom(parentWidget());
  const QSize words = menu.fontMetrics.size(Qt::TextSingleLine, text());
  return {size.width(), style()->sizeFromContents(QStyle::CT_MenuBarItem, &menu, words, parentWidget()).height()};
}

// The beginning and the ending of a long name tell more than its middle.
void DocumentLabel::Refresh() {
  const QString name = file_.empty() ? tr("New message") : ToQt(platform::Printable(file_.filename().string()));
  const QString shown = fontMetrics().elidedText(name, Qt::ElideMiddle, kWidest);
  setText(is_changed_ ? tr("%1, not saved").arg(shown) : shown);
  // A bar gives its corner a place only where it takes it in.
  if (auto* menus = qobject_cast<QMenuBar*>(parentWidget())) menus->setCornerWidget(this);
  setToolTip(file_.empty() ? tr("It has no file yet") : PlainTip(PathToQt(file_)));
}

}  // namespace quillcast::desktop
