// Prints recipients as a list, on paper or into a PDF file, and says how far it is.
#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"

class QPrinter;
class QTimer;

namespace quillcast::desktop {

class CountBar;
struct SharedCount;
class StatusLine;

class RecipientPrintForm final : public QDialog {
  Q_OBJECT
 public:
  // Asks for the printer and prints. What came of it is said in the status line.
  static void Print(const profile::Program& program, const QString& heading, std::vector<std::int64_t> keys,
                    StatusLine& status, QWidget* parent);
  // The same on a printer, or into a file, that was chosen; one that is locked is asked about.
  static void PrintOn(const profile::Program& program, std::shared_ptr<QPrinter> printer, const QString& heading,
                      std::vector<std::int64_t> keys, StatusLine& status, QWidget* parent);

  // Begins at once and closes when it is done.
  RecipientPrintForm(const profile::Program& program, std::shared_ptr<QPrinter> printer, const QString& heading,
                     std::vector<std::int64_t> keys, QWidget* parent);
  ~RecipientPrintForm() override;
  // What was printed, and where it is; or that it was cancelled.
  const Result<QString>& outcome() const { return outcome_; }

 public slots:
  void reject() override;  // ends it

 private:
  void End(const Result<int>& pages, const QString& file);

  BackgroundTask* task_;
  QTimer* tick_;
  CountBar* bar_;
  std::shared_ptr<SharedCount> seen_;  // shared with the thread that prints
  bool is_cancelled_ = false;
  Result<QString> outcome_{QString()};
};

}  // namespace quillcast::desktop
