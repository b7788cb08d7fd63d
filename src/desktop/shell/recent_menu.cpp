#include "desktop/shell/recent_menu.h"

#include "desktop/widgets/qt_text.h"
#include "document/recent_documents.h"

namespace quillcast::desktop {
namespace {

constexpr int kLongestEntry = 400;  // pixels

}  // namespace

RecentMenu::RecentMenu(profile::SettingsStore& settings, QWidget* parent)
    : QMenu(tr("Recent &Documents"), parent), settings_(settings) {
  setObjectName("RecentMenu");
  setToolTipsVisible(true);
  Fill();
  connect(this, &QMenu::aboutToShow, this, &RecentMenu::Fill);
}

void RecentMenu::Fill() {
  clear();
  const auto documents = document::RecentDocuments(settings_);
  if (!documents) emit Failed(documents.error());
  if (!documents || documents->empty()) {
    addAction(tr("None yet"))->setEnabled(false);
    return;
  }
  int number = 0;
  for (const auto& document : *documents) AddDocument(document.file, ++number);
  addSeparator();
  addAction(tr("&Clear"), this, [this] {
    const auto cleared = document::ForgetRecentDocuments(settings_);
    if (!cleared) emit Failed(cleared.error());
  });
}

// The first nine by their numbers.
void RecentMenu::AddDocument(const std::filesystem::path& file, int number) {
  const QString path = PathToQt(file);
  const QString name = fontMetrics().elidedText(path, Qt::ElideMiddle, kLongestEntry).replace('&', "&&");
  QAction* action = addAction(number < 10 ? QString("&%1  %2").arg(QString::number(number), name) : name, this,
                              [this, file] { emit Picked(file); });
  action->setToolTip(PlainTip(path));
}

}  // namespace quillcast::desktop
