#include "desktop/domain/print_report.h"

#include <QAbstractTextDocumentLayout>
#include <QFontDatabase>
#include <QPainter>
#include <QPrinter>
#include <QTextDocument>

#include "desktop/widgets/print_whole.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr int kTextSize = 9;  // points

void LayOut(QTextDocument& document, const QString& text, QPrinter& printer, const QSizeF& page) {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPointSize(kTextSize);
  document.setDefaultFont(font);
  document.setDocumentMargin(0);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  option.setTextDirection(Qt::LeftToRight);
  document.setDefaultTextOption(option);
  document.setPlainText(text);
  document.documentLayout()->setPaintDevice(&printer);
  document.setPageSize(page);
}

void DrawPage(QPainter& painter, const QTextDocument& document, int page) {
  const double height = document.pageSize().height();
  painter.save();
  painter.translate(0, -page * height);
  const QRectF part(0, page * height, document.pageSize().width(), height);
  painter.setClipRect(part);
  QAbstractTextDocumentLayout::PaintContext context;
  context.clip = part.adjusted(0, 1, 0, -1);            // lines that only touch the page are on another
  context.palette.setColor(QPalette::Text, Qt::black);  // on paper, whatever the window's colours are
  document.documentLayout()->draw(&painter, context);
  painter.restore();
}

Result<int> Draw(QPrinter& printer, const QString& text, const Error& failure, const platform::CancelToken& cancel) {
  QPainter painter;
  if (!painter.begin(&printer)) return failure;
  QTextDocument document;
  LayOut(document, text, printer, painter.viewport().size());
  const int pages = document.pageCount();
  for (int page = 0; page < pages; ++page) {
    const bool is_cancelled = cancel.Requested() != platform::Stop::kNone;
    if (is_cancelled || (page > 0 && !printer.newPage())) {
      printer.abort();
      return is_cancelled ? Error{Failure::kTryAgain, "Printing was cancelled."} : failure;
    }
    DrawPage(painter, document, page);
  }
  return painter.end() ? Result<int>(pages) : failure;
}

}  // namespace

Result<int> PrintReport(QPrinter& printer, const QString& text, const platform::OwnFiles& own,
                        const platform::CancelToken& cancel) {
  const bool is_file = printer.outputFormat() == QPrinter::PdfFormat;
  const Error failure = CannotPrint(is_file ? PathFromQt(printer.outputFileName()) : std::filesystem::path());
  return PrintWhole(printer, own, [&] { return Draw(printer, text, failure, cancel); });
}

}  // namespace quillcast::desktop
