// The help: a page at a topic, the contents beside it, and a search through all pages.
#pragma once

#include <QDialog>
#include <QString>
#include <optional>
#include <vector>

#include "help/help_pages.h"
#include "profile/folders.h"

class QLineEdit;
class QTextBrowser;
class QUrl;

namespace quillcast::desktop {

class RowList;

class HelpForm final : public QDialog {
  Q_OBJECT
 public:
  // `topic` is the name of a page in the program folder's help, "Welcome.htm", or of a place in one,
  // "Sending.htm#pace". Another page opens in the same window.
  HelpForm(const profile::Folders& folders, const QString& topic, QWidget* parent);

 private:
  void BuildWindow();
  void LoadPages();
  void Open(const QString& topic);
  void List();
  void OpenChosen();
  void Follow(const QUrl& source);
  QString CellText(std::size_t row) const;

  const QString folder_;
  std::vector<help::Page> pages_;
  std::vector<help::Hit> listed_;  // into pages_
  QLineEdit* search_;
  RowList* contents_;
  QTextBrowser* page_;
  bool follows_ = false;  // the contents are being brought to the page that is open
};

using help::kWelcomeTopic;
// Of groups, recipients and the search among them.
inline constexpr const char* kGroupsTopic = "Group Manager 1.htm";

// The help that is open over this window, at whatever page; null where none is. A window has one: whoever asks for it
// again finds it as it was left.
HelpForm* HelpOver(QWidget& window);
void BringToFront(HelpForm& help);

// The topic of a window of ours, by its name; nothing for the toolkit's own windows.
std::optional<QString> TopicOf(const QString& window);

}  // namespace quillcast::desktop
