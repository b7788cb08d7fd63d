#include "desktop/domain/report_box.h"

#include <QFontDatabase>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <memory>

#include "desktop/domain/print_report.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "domain/report_output.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"

namespace quillcast::desktop {

ReportBox::ReportBox(const char* name, const QString& accessible_name, const QString& empty_text,
                     const profile::Program& program, StatusLine& status, QWidget* parent)
    : QPlainTextEdit(parent),
      choose_printer([this](QPrinter& printer) {
        QPrintDialog dialog(&printer, window());
        dialog.setObjectName("PrintDialog");
        dialog.setWindowTitle(tr("Print"));
        return dialog.exec() == QDialog::Accepted;
      }),
      program_(program),
      status_(status),
      empty_(new EmptyState(this, empty_text)),
      task_(new BackgroundTask(this)),
      save_(new QPushButton(tr("&Save…"), parent)),
      print_(new QPushButton(tr("&Print…"), parent)) {
  setObjectName(name);
  setAccessibleName(accessible_name);
  setLayoutDirection(Qt::LeftToRight);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  empty_->setFont(parent->font());
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setTabChangesFocus(true);
  setUndoRedoEnabled(false);
  save_->setObjectName("SaveButton");
  print_->setObjectName("PrintButton");
  connect(save_, &QPushButton::clicked, this, &ReportBox::Save);
  connect(print_, &QPushButton::clicked, this, &ReportBox::Print);
}

void ReportBox::Show(const QString& text) {
  text_ = platform::ReplaceAll(FromQt(text), "\r\n", "\n");
  setPlainText(ToQt(domain::ShownReport(text_)));
  empty_->setVisible(text.isEmpty());
}

void ReportBox::Save() {
  const auto saved =
      domain::SaveReport(text_, platform::LocaleCodeset(), program_.folders.OwnFiles(), program_.prompts);
  if (!saved) return status_.Fail(saved.error());
  if (*saved) status_.Say(InWords(**saved));
}

void ReportBox::Print() {
  if (task_->is_running()) return;
  if (!domain::MayPrintReport(text_, program_.prompts)) return;
  const auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  if (!choose_printer(*printer)) return;
  status_.Say(tr("Printing…"));
  task_->Start([this, printer, lines = ToQt(domain::PrintedReport(text_)),
                own = program_.folders.OwnFiles()](const platform::CancelToken& cancel) {
    const auto pages = PrintReport(*printer, lines, own, cancel);
    return [this, pages] { TellPrinted(pages); };
  });
}

void ReportBox::TellPrinted(const Result<int>& pages) {
  if (!pages) return status_.Fail(pages.error());
  status_.Say(Counted(*pages, tr("1 page was printed."), tr("%1 pages were printed.")));
}

}  // namespace quillcast::desktop
