// The dialog that asks the maker for help: what is wrong on its first page, and on the second all that goes along.
#pragma once

#include <QDialog>
#include <array>
#include <optional>

#include "account/shown_route.h"
#include "platform/environment.h"
#include "platform/result.h"
#include "profile/program.h"
#include "smtp/outcome.h"
#include "support/support_request.h"
#include "support/system_facts.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;

namespace quillcast::desktop {

class BackgroundTask;
class FormGrid;
class StatusLine;

class SupportForm final : public QDialog {
  Q_OBJECT
 public:
  // While somebody practises, a request stays on this computer, and that is told.
  using Server = account::ShownRoute::Server;
  // `priority` as the main window has it. Both references outlive the dialog.
  SupportForm(const profile::Program& program, const platform::Environment& environment, const QString& priority,
              Server server, QWidget* parent);
  ~SupportForm() override;

 public slots:
  // A request that is being sent is given up first; the dialog then stays. So it does at first where a description
  // would be lost.
  void reject() override;

 private:
  void MakeWindow();
  QWidget* MakeRequestPage();
  QWidget* MakeContentsPage();
  void AddAttachment(FormGrid* grid);
  void FillIn();
  void FindFurther();
  void OfferFurther(const Result<support::FurtherFiles>& found);
  support::SupportRequest Collect() const;
  void ShowContents();
  void Send();
  bool GoesWhereItWasTold();
  void SayItIsPractice();
  void ShowEnd(const support::SupportRequest& request, const Result<smtp::Outcome>& end);
  void EnableControls();

  const profile::Program& program_;
  const platform::Environment& environment_;
  account::ShownRoute route_;
  support::SystemFacts facts_;
  std::optional<support::SupportRequest> sent_;    // the same one is not sent again
  std::optional<support::SupportRequest> warned_;  // that it would be lost
  BackgroundTask* look_;                           // at what is there and what would go
  BackgroundTask* task_;                           // sends
  QTabWidget* pages_;
  QLineEdit* name_;
  QLineEdit* email_;
  QLineEdit* product_;
  QLineEdit* os_;
  QComboBox* topic_;
  QComboBox* priority_;
  QPlainTextEdit* description_;
  QLineEdit* attachment_;
  QPushButton* add_;
  QPushButton* remove_;
  std::array<QCheckBox*, support::kFurtherItems> further_{};
  QPlainTextEdit* contents_;
  QComboBox* drives_;
  StatusLine* status_;
  QPushButton* send_;
  QPushButton* cancel_;
};

}  // namespace quillcast::desktop
