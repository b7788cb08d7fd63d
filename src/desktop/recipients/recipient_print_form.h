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

class RecipientPrintForm final : public QDialog {
  Q_OBJECT
 public:
  // Asks for the printer and prints. What came of it, for a status line; empty where nothing was printed.
  static QString Print(const profile::Program& program, const QString& heading, std::vector<std::int64_t> keys,
                       QWidget* parent);

  // Begins at once and closes when it is done.
  RecipientPrintForm(const profile::Program& program, std::shared_ptr<QPrinter> printer, const QString& heading,
                     std::vector<std::int64_t> keys, QWidget* parent);
  ~RecipientPrintForm() override;
  const QString& said() const { return said_; }

 public slots:
  void reject() override;  // ends it

 private:
  struct Progress;

  void End(const Result<int>& pages, const QString& file);

  BackgroundTask* task_;
  QTimer* tick_;
  CountBar* bar_;
  std::shared_ptr<Progress> seen_;  // shared with the thread that prints
  QString said_;
};

}  // namespace quillcast::desktop
