// The help, opened at a topic.
#pragma once

#include <QDialog>
#include <QString>

#include "profile/folders.h"

namespace quillcast::desktop {

class HelpForm final : public QDialog {
  Q_OBJECT
 public:
  // `topic` is the name of a page in the program folder's help: "Welcome.htm".
  HelpForm(const profile::Folders& folders, const QString& topic, QWidget* parent);
};

// The topic of a window, by its name; the welcome page for one that has none.
QString TopicOf(const QString& window);

}  // namespace quillcast::desktop
