#include "desktop/mail_file/print_without_window.h"

#include <QApplication>
#include <QPageRanges>
#include <QPrinter>
#include <QPrinterInfo>
#include <cstdio>
#include <cstdlib>

#include "desktop/mail_file/print_message.h"
#include "desktop/widgets/qt_text.h"
#include "mail_file/print_job.h"

namespace quillcast::desktop {
namespace {

using mail_file::PrintCode;
using mail_file::PrintedMessage;

void Tell(const std::string& lines) {
  std::fputs(lines.c_str(), stdout);
  std::fflush(stdout);
}

PrintedMessage NotBegun(const Error& error) { return {.code = PrintCode::kNotBegun, .error = error}; }

// It is known by name, or it is no printer.
bool Choose(QPrinter& printer, const std::string& name) {
  if (QPrinterInfo::printerInfo(ToQt(name)).isNull()) return false;
  printer.setPrinterName(ToQt(name));
  return printer.isValid();
}

PrintedMessage NoSuchPrinter(const std::string& name) {
  const QStringList names = QPrinterInfo::availablePrinterNames();
  const Sentence there =
      names.isEmpty() ? Sentence("This system has none.") : Say("It has {}.", FromQt(names.join(", ")));
  return {.code = PrintCode::kNoPrinter,
          .error = Error{Failure::kNoInput, Say("There is no printer of the name \"{}\".", name), there}};
}

PrintedMessage Print(const mail_file::PrintJob& job) {
  QPrinter printer(QPrinter::HighResolution);
  if (job.printer.empty()) printer.setOutputFormat(QPrinter::PdfFormat);
  if (!job.printer.empty() && !Choose(printer, job.printer)) return NoSuchPrinter(job.printer);
  if (!job.pages.empty()) {
    const QPageRanges ranges = QPageRanges::fromString(ToQt(job.pages));
    if (ranges.isEmpty())
      return NotBegun({Failure::kUsage, Say("\"{}\" names no pages.", job.pages), "Name them as \"1-3,7\"."});
    printer.setPrintRange(QPrinter::PageRange);
    printer.setPageRanges(ranges);
  }
  const platform::CancelToken never;  // a signal ends it; whoever started it has the file
  const auto loading = mail_file::Load("/proc/self/fd/0", {job.mode, &never});
  if (!loading) return NotBegun(loading.error());
  if (!loading->message) return NotBegun({Failure::kNoInput, mail_file::kNoMessageHandle});
  const auto pages = ReadPages(*loading->message, job.form, mail_file::kMostPrinted, never);
  if (!pages) return NotBegun(pages.error());
  const PrintWatch watch{never, [](int page, int of) { Tell(mail_file::LineOfPage(page, of)); }};
  if (!job.printer.empty()) return PrintMessageFile(printer, *pages, {}, watch);
  return PrintMessageInto(printer, *pages, mail_file::kPrintedFile, job.target, watch);
}

}  // namespace

std::optional<int> PrintWithoutWindow(int count, char** arguments) {
  if (count < 2 || arguments[1] != mail_file::kPrintJob) return std::nullopt;
  const std::vector<std::string> job(arguments + 2, arguments + count);
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  int own = 1;  // the others are not the toolkit's
  QApplication application(own, arguments);
  Tell(mail_file::LinesOfEnd(Print(mail_file::ReadArguments(job))));
  return 0;
}

}  // namespace quillcast::desktop
