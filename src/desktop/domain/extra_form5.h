// The dialog that tries a connection to a mail server: its report on the left, and beside it what came of each step and
// what it means for the account.
#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "domain/connection/connection_facts.h"
#include "profile/program.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class MeaningBox;
class ReportBox;
class RowList;
class StatusLine;

class ExtraForm5 final : public QDialog {
  Q_OBJECT
 public:
  ExtraForm5(const profile::Program& program, QWidget* parent);
  ~ExtraForm5() override;

 public slots:
  // Asks always. What is under way is given up.
  void reject() override;

 private:
  void MakeWindow();
  QWidget* MakeBeside();
  void Process();
  void ShowTest(const domain::ConnectionTest& test);
  // In the given order.
  void SetEnabled(bool enabled);

  const profile::Program& program_;
  BackgroundTask* task_;
  StatusLine* status_;
  QLineEdit* server_;
  QLineEdit* port_;
  QLabel* server_label_ = nullptr;
  QLabel* port_label_ = nullptr;
  ReportBox* report_;
  MeaningBox* meaning_;
  RowList* facts_list_;
  QPushButton* process_;
  QPushButton* cancel_;
  std::vector<domain::ConnectionFact> facts_;
};

}  // namespace quillcast::desktop
