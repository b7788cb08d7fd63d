// What a look over the message and the whole group found, before anything is sent. It works beside the window.
#pragma once

#include <QWidget>

#include "app/program.h"
#include "compose/message_document.h"
#include "platform/ui/background_task.h"
#include "recipients/recipient_store.h"

class QLabel;
class QListWidget;

namespace quillcast::sending {

class NotesPanel final : public QWidget {
  Q_OBJECT
 public:
  NotesPanel(const app::Program& program, QWidget* parent);

  // A question that belongs to what is found stands below it.
  void AddQuestion(QWidget* question);
  // Looks, and shows what there is to say; anew when it is called again.
  void LookAt(const compose::MessageDocument& document, const recipients::RecipientGroup& group);
  // The run begins: what was not found by now is told by the run.
  void Close();

 private:
  void Show(const QStringList& troubles, const QStringList& pictures);

  const app::Program& program_;
  platform::BackgroundTask* look_;
  QLabel* state_;
  QListWidget* notes_;
};

}  // namespace quillcast::sending
