#include "desktop/recipients/recipient_print_form.h"

#include <QDir>
#include <QFileInfo>
#include <QPrintDialog>
#include <QPrinter>
#include <QStandardPaths>
#include <QTimer>
#include <atomic>

#include "desktop/recipients/print_recipients.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/file_attributes.h"

namespace quillcast::desktop {
namespace {

constexpr int kNarrowestWindow = 420;

// Where the last list was printed to, or the person's documents where they have a folder for them.
QString& LastFolder() {
  static QString folder;
  if (!folder.isEmpty()) return folder;
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  folder = QDir(documents).exists() ? documents : QDir::homePath();
  return folder;
}

}  // namespace

void RecipientPrintForm::Print(const profile::Program& program, const QString& heading, std::vector<std::int64_t> keys,
                               StatusLine& status, QWidget* parent) {
  auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  printer->setOutputFileName(QDir(LastFolder()).filePath("recipients.pdf"));
  QPrintDialog dialog(printer.get(), parent);
  dialog.setObjectName("PrintDialog");
  dialog.setWindowTitle(tr("Print"));
  if (dialog.exec() == QDialog::Accepted) PrintOn(program, printer, heading, std::move(keys), status, parent);
}

void RecipientPrintForm::PrintOn(const profile::Program& program, std::shared_ptr<QPrinter> printer,
                                 const QString& heading, std::vector<std::int64_t> keys, StatusLine& status,
                                 QWidget* parent) {
  status.Say({});
  if (printer->outputFormat() == QPrinter::PdfFormat) {
    const auto file = PathFromQt(printer->outputFileName());
    const auto may_write = platform::MayWriteTo(file, program.folders.OwnFiles(), program.prompts);
    if (!may_write) return status.Fail(may_write.error());
    if (!*may_write) return status.Say(InWords(platform::LeftLocked(file)));
  }
  const QString file = printer->outputFileName();
  RecipientPrintForm form(program, std::move(printer), heading, std::move(keys), parent);
  form.exec();
  const auto& outcome = form.outcome();
  if (outcome && !file.isEmpty()) LastFolder() = QFileInfo(file).path();
  outcome ? status.Say(*outcome) : status.Fail(outcome.error());
}

RecipientPrintForm::RecipientPrintForm(const profile::Program& program, std::shared_ptr<QPrinter> printer,
                                       const QString& heading, std::vector<std::int64_t> keys, QWidget* parent)
    : QDialog(parent),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      seen_(std::make_shared<SharedCount>()) {
  setObjectName("RecipientPrintForm");
  setWindowTitle(tr("Print"));
  setMinimumWidth(kNarrowestWindow);
  auto* column = new FormColumn(this);
  auto* progress = column->Add(new ProgressPanel("CancelButton", tr("Cancel"), this));
  bar_ = progress->AddBar("ProgressBar", tr("Recipients printed:"));
  connect(progress, &ProgressPanel::Pressed, this, &RecipientPrintForm::reject);
  connect(tick_, &QTimer::timeout, this, [this] { bar_->Count(*seen_); });
  seen_->total = keys.size();
  tick_->start(kTick);
  const QString file = printer->outputFileName();
  task_->Start([this, file, printer = std::move(printer), heading, keys = std::move(keys),
                store_file = program.folders.Database(), own = program.folders.OwnFiles(),
                seen = seen_](const platform::CancelToken& cancel) {
    const auto pages = PrintRecipients(*printer, recipients::RecipientStore(store_file, {.cancel = &cancel}), heading,
                                       keys, own, cancel, [seen](std::size_t done) { seen->done = done; });
    return [this, pages, file] { End(pages, file); };
  });
}

RecipientPrintForm::~RecipientPrintForm() = default;

void RecipientPrintForm::End(const Result<int>& pages, const QString& file) {
  if (!pages && is_cancelled_ && pages.error().failure == Failure::kTryAgain) {
    outcome_ = InWords(pages.error());
  } else if (!pages) {
    outcome_ = pages.error();
  } else {
    const QString count = Counted(*pages, tr("1 page was printed."), tr("%1 pages were printed."));
    outcome_ = file.isEmpty() ? count : count + ' ' + tr("They are in %1.").arg(file);
  }
  accept();
}

void RecipientPrintForm::reject() {
  is_cancelled_ = true;
  task_->Cancel();
}

}  // namespace quillcast::desktop
