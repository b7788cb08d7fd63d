// The help, opened at a topic.
#pragma once

#include <QDialog>
#include <QString>
#include <optional>

#include "profile/folders.h"

namespace quillcast::desktop {

class HelpForm final : public QDialog {
  Q_OBJECT
 public:
  // `topic` is the name of a page in the program folder's help: "Welcome.htm".
  HelpForm(const profile::Folders& folders, const QString& topic, QWidget* parent);
};

inline constexpr const char* kWelcomeTopic = "Welcome.htm";
// Of groups, recipients and the search among them.
inline constexpr const char* kGroupsTopic = "Group Manager 1.htm";

// The topic of a window of ours, by its name; nothing for the toolkit's own windows.
std::optional<QString> TopicOf(const QString& window);

}  // namespace quillcast::desktop
