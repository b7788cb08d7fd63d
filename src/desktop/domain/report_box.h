// The box of a report, with the buttons that save and print what stands in it.
//
//   report_ = new ReportBox("Report", tr("Report"), tr("What the server says appears here."), program, *status_, this);
//   column->Add(report_, 1);
//   column->AddLine({nullptr, report_->save_button(), report_->print_button()});
#pragma once

#include <QPlainTextEdit>
#include <functional>

#include "profile/program.h"

class QPrinter;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class EmptyState;
class StatusLine;

// Read only, of one width of letter, from left to right as reports are in every locale. What became of a file or a
// print is told in the status line.
class ReportBox final : public QPlainTextEdit {
  Q_OBJECT
 public:
  // The buttons are "SaveButton" and "PrintButton"; the window lays them out, and says when they can be pressed.
  ReportBox(const char* name, const QString& accessible_name, const QString& empty_text,
            const profile::Program& program, StatusLine& status, QWidget* parent);

  // In place of what stands there. Any line ends. The box breaks long lines and shows "?" for what would be obeyed;
  // what is saved and printed is the text itself.
  void Show(const QString& text);
  QPushButton* save_button() const { return save_; }
  QPushButton* print_button() const { return print_; }

  // Lets the person choose the printer; false for none. The desktop's dialog where nothing else is put here.
  std::function<bool(QPrinter& printer)> choose_printer;

 private:
  void Save();
  void Print();
  void TellPrinted(const Result<int>& pages);

  const profile::Program& program_;
  StatusLine& status_;
  std::string text_;
  EmptyState* empty_;
  BackgroundTask* task_;
  QPushButton* save_;
  QPushButton* print_;
};

}  // namespace quillcast::desktop
