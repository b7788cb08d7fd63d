// The person's own templates in a list, with what can be done to them.
#pragma once

#include <QGroupBox>
#include <functional>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "document/own_templates.h"
#include "profile/program.h"

class QListWidget;
class QPushButton;

namespace quillcast::desktop {

// Letters are kept, imported and exported beside the window.
class OwnTemplatesBox final : public QGroupBox {
  Q_OBJECT
 public:
  // `present` gives the message that stands in the editor, if that answers.
  OwnTemplatesBox(const profile::Program& program, std::function<Result<document::LetterToKeep>()> present,
                  QWidget* parent);

  // Whether what is kept or imported is chosen then; not where a choice in another list would go.
  void SetChoosesNew(bool chooses) { chooses_new_ = chooses; }

  // Empty where none is chosen.
  QString Chosen() const;
  void ChooseNone();
  // Looks into their folder; to be called once what it says is heard.
  void Refresh() { Fill(Chosen()); }
  const document::OwnTemplates& templates() const { return own_; }
  // A letter is being copied; closing the window gives it up.
  bool is_at_work() const { return task_.is_running(); }
  QString progress() const { return tr("Copying… Cancel gives it up."); }

 signals:
  void ChosenChanged();  // by the person
  void Said(const QString& sentence);
  void Failed(const quillcast::Error& error);

 private:
  void BuildButtons();
  void Keep();
  void Rename();
  void Delete();
  void Export();
  void Import();
  void Run(const QString& name, const QString& said, std::function<Result<void>(const platform::CancelToken*)> work);
  void Fill(const QString& chosen);
  void Enable();

  const profile::Program& program_;
  std::function<Result<document::LetterToKeep>()> present_;
  document::OwnTemplates own_;
  QListWidget* list_;
  std::vector<QPushButton*> of_chosen_;   // what needs a choice
  std::vector<QPushButton*> of_nothing_;  // what does not
  bool chooses_new_ = true;
  BackgroundTask task_{this};
};

}  // namespace quillcast::desktop
