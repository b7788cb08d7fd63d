#include "desktop/mail_file/print_message.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QPrinter>
#include <cmath>
#include <memory>

#include "desktop/mail_file/foreign_page.h"
#include "desktop/widgets/print_whole.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

using mail_file::PrintCode;

constexpr int kTextSize = 10;    // points
constexpr int kFewestLines = 3;  // that a page has room for, whatever the margins are

double Millimetres(const std::string& text) { return QString::fromStdString(text).toDouble(); }

void SetMargins(QPrinter& printer, const mail_file::PrintForm& form) {
  const double top = Millimetres(form.top);
  printer.setFullPage(true);  // else the least margins of the printer are added to what was asked for
  printer.setPageMargins(QMarginsF(Millimetres(form.left), top, Millimetres(form.right), top), QPageLayout::Millimeter);
}

class Pages {
 public:
  Pages(QPrinter& printer, const MessagePages& pages) : printer_(printer), form_(pages.form) {
    document_ = std::make_unique<ForeignPage>(pages.body.is_page ? ToQt(pages.body.page.html) : QString(),
                                              pages.pictures, nullptr);
    document_->setDefaultFont(QFont(QString(), kTextSize));
    if (!pages.body.is_page) document_->setPlainText(ToQt(pages.body.text));
    document_->setDocumentMargin(0);
  }

  PrintCode Print() {
    if (!printer_.isValid()) return PrintCode::kNoPrinter;
    if (!painter_.begin(&printer_)) return PrintCode::kNotBegun;
    LayOut();
    count_ = document_->pageCount();
    for (int page = 0; page < count_; ++page) {
      if (page > 0 && !printer_.newPage()) return PrintCode::kNotWritten;
      Draw(page);
    }
    return painter_.end() ? PrintCode::kPrinted : PrintCode::kNotWritten;
  }
  int count() const { return count_; }

 private:
  void LayOut() {
    room_ = printer_.pageLayout().paintRectPixels(printer_.resolution());
    painter_.setFont(QFont(painter_.font().family(), kTextSize));
    line_ = QFontMetrics(painter_.font(), &printer_).height();
    const int above = form_.heading.empty() ? 0 : 2 * line_;
    body_ = room_.adjusted(0, above, 0, -2 * line_);
    body_.setHeight(std::max(body_.height(), kFewestLines * line_));
    document_->documentLayout()->setPaintDevice(&printer_);
    document_->setPageSize(body_.size());
  }

  void Draw(int page) {
    DrawHeading();
    const QRect number(room_.left(), room_.bottom() - line_, room_.width(), line_);
    painter_.drawText(number, Qt::AlignRight | Qt::AlignBottom, QString("%1/%2").arg(page + 1).arg(count_));
    painter_.save();
    painter_.translate(body_.left(), body_.top() - page * body_.height());
    const QRectF part(0, page * body_.height(), body_.width(), body_.height());
    painter_.setClipRect(part);
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = part.adjusted(0, 1, 0, -1);            // lines that only touch the page are on another
    context.palette.setColor(QPalette::Text, Qt::black);  // on paper, whatever the window's colours are
    document_->documentLayout()->draw(&painter_, context);
    painter_.restore();
  }

  void DrawHeading() {
    if (form_.heading.empty()) return;
    painter_.save();
    QFont font = painter_.font();
    font.setBold(form_.is_bold);
    font.setUnderline(form_.is_underlined);
    painter_.setFont(font);
    const QRect line(room_.left(), room_.top(), room_.width(), line_);
    const QString text =
        QFontMetrics(font, &printer_).elidedText(ToQt(form_.heading).simplified(), Qt::ElideRight, line.width());
    painter_.drawText(line, form_.is_centred ? Qt::AlignHCenter : Qt::AlignLeft, text);
    painter_.restore();
  }

  QPrinter& printer_;
  const mail_file::PrintForm& form_;
  std::unique_ptr<ForeignPage> document_;
  QPainter painter_;
  QRect room_;  // between the margins
  QRect body_;  // of it
  int line_ = 0;
  int count_ = 0;
};

}  // namespace

PrintedMessage DrawMessage(QPrinter& printer, const MessagePages& pages) {
  SetMargins(printer, pages.form);
  Pages drawing(printer, pages);
  const PrintCode code = drawing.Print();
  if (code == PrintCode::kNotWritten) printer.abort();
  return {code, drawing.count(), {}};
}

PrintedMessage PrintMessageFile(QPrinter& printer, const MessagePages& pages, const platform::OwnFiles& own) {
  const auto file =
      printer.outputFormat() == QPrinter::PdfFormat ? PathFromQt(printer.outputFileName()) : std::filesystem::path();
  PrintedMessage printed;
  const auto whole = PrintWhole(printer, own, [&]() -> Result<int> {
    printed = DrawMessage(printer, pages);
    return printed.code == PrintCode::kPrinted ? Result<int>(printed.pages) : CannotPrint(file);
  });
  if (whole) return printed;
  if (printed.code == PrintCode::kPrinted)  // drawn, and not written; or never begun
    printed.code = printed.pages > 0 ? PrintCode::kNotWritten : PrintCode::kNotBegun;
  printed.error = whole.error();
  return printed;
}

}  // namespace quillcast::desktop
