// What a look over the message and the whole group found, before anything is sent. It works beside the window.
#pragma once

#include <QStringList>
#include <QWidget>

#include "desktop/run/go_on_request.h"
#include "desktop/widgets/background_task.h"
#include "document/message_document.h"
#include "profile/program.h"
#include "run/prepared_run.h"

namespace quillcast::desktop {

class RowList;
class StatusLine;

class NotesPanel final : public QWidget {
  Q_OBJECT
 public:
  NotesPanel(const profile::Program& program, QWidget* parent);

  // A question that belongs to what is found stands below it.
  void AddQuestion(QWidget* question);
  // Looks, and shows what there is to say; anew when it is called again.
  void LookAt(const document::MessageDocument& document, const run::ChosenGroup& group);
  // The same for a kept run: what is other by now than it was when it began, where it is to go at this pace.
  void LookAt(const GoOnRequest& request, const run::PaceTexts& pace);
  // The run begins: what was not found by now is told by the run.
  void Close();

 private:
  void Show(const QStringList& troubles, const QStringList& others);

  const profile::Program& program_;
  BackgroundTask* look_;
  StatusLine* state_;
  QStringList found_;
  RowList* notes_;
};

}  // namespace quillcast::desktop
