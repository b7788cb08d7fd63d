#include "desktop/mail_file/print_message.h"

#include <QAbstractTextDocumentLayout>
#include <QPageRanges>
#include <QPainter>
#include <QPrinter>
#include <QTextBlock>
#include <QTextFrame>
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "desktop/mail_file/foreign_page.h"
#include "desktop/mail_file/page_sizes.h"
#include "desktop/mail_file/page_width.h"
#include "desktop/widgets/print_whole.h"
#include "desktop/widgets/qt_text.h"
#include "mail_file/load_settings.h"

namespace quillcast::desktop {
namespace {

using mail_file::PrintCode;
using mail_file::PrintedMessage;

constexpr int kTextSize = 10;  // points
// Dots between letters, too few to be seen: without any, "ffi" becomes one sign, which nobody finds in the file again.
constexpr double kBetweenLetters = 0.02;
constexpr int kFewestLines = 3;  // that a page has room for, whatever the margins are
// Dots per inch. The toolkit's layout counts to 33,554,431 of them, which is 9,500 pages; what is drawn is no coarser.
constexpr int kResolution = 300;
constexpr double kMostShrunk = 10;  // times; what is wider is cut

QFont TextFont(const QString& family) {
  QFont font(family, kTextSize);
  font.setLetterSpacing(QFont::AbsoluteSpacing, kBetweenLetters);
  return font;
}

double Millimetres(const std::string& text) { return QString::fromStdString(text).toDouble(); }

void SetUp(QPrinter& printer, const mail_file::PrintForm& form) {
  const double top = Millimetres(form.top);
  printer.setResolution(kResolution);
  printer.setFullPage(true);  // else the least margins of the printer are added to what was asked for
  printer.setPageMargins(QMarginsF(Millimetres(form.left), top, Millimetres(form.right), top), QPageLayout::Millimeter);
}

// Those of the message's pictures that are on no page.
std::size_t PicturesLeftOut(const MessagePages& pages) {
  const auto empty =
      std::count_if(pages.pictures.begin(), pages.pictures.end(), [](const QImage& image) { return image.isNull(); });
  return pages.body.page.pictures_left_out + static_cast<std::size_t>(empty);
}

class Pages {
 public:
  Pages(QPrinter& printer, const MessagePages& pages, const PrintWatch& watch)
      : printer_(printer), pages_(pages), form_(pages.form), watch_(watch) {}

  PrintedMessage Print() {
    printed_.code = Run();
    if (painter_.isActive() && printed_.code != PrintCode::kPrinted) printer_.abort();
    if (!painter_.isActive() || painter_.end() || printed_.code != PrintCode::kPrinted) return printed_;
    printed_.code = PrintCode::kNotWritten;
    return printed_;
  }

 private:
  PrintCode Run() {
    if (!printer_.isValid()) return PrintCode::kNoPrinter;
    if (!painter_.begin(&printer_)) return PrintCode::kNotBegun;
    MakeRoom();
    MakeDocument();
    if (!LayOutWithin()) return PrintCode::kCancelled;
    printed_.left_out = mail_file::LeftOut(is_cut_ || pages_.body.page.is_cut, PicturesLeftOut(pages_));
    const std::vector<int> wanted = WantedPages();
    if (wanted.empty()) {
      printed_.error =
          Error{Failure::kUsage, Say("There is no such page: the message has {}.", count_), "Name pages as \"1-3,7\"."};
      return PrintCode::kNotBegun;
    }
    return DrawAll(wanted);
  }

  PrintCode DrawAll(const std::vector<int>& wanted) {
    for (const int page : wanted) {
      if (IsCancelled()) return PrintCode::kCancelled;
      if (printed_.pages > 0 && !printer_.newPage()) return PrintCode::kNotWritten;
      Draw(page);
      watch_.see(++printed_.pages, static_cast<int>(wanted.size()));
    }
    return PrintCode::kPrinted;
  }

  void MakeRoom() {
    const QPageLayout layout = printer_.pageLayout();  // whose margins are ours to keep, on a full page
    room_ = layout.fullRectPixels(printer_.resolution()).marginsRemoved(layout.marginsPixels(printer_.resolution()));
    painter_.setFont(TextFont(painter_.font().family()));
    line_ = QFontMetrics(painter_.font(), &printer_).height();
    const int above = form_.heading.empty() ? 0 : 2 * line_;
    body_ = room_.adjusted(0, above, 0, -2 * line_);
    body_.setHeight(std::max(body_.height(), kFewestLines * line_));
  }

  // The text comes last, for it is laid out anew after each of the others.
  void MakeDocument() {
    document_ = std::make_unique<ForeignPage>(QString(), pages_.pictures, nullptr);
    document_->setDefaultFont(TextFont(QFont().family()));  // one without a family cannot be drawn into a preview
    document_->setDocumentMargin(0);
    document_->setDefaultStyleSheet(document_->defaultStyleSheet() + " pre { white-space: pre-wrap }");  // off no page
    document_->documentLayout()->setPaintDevice(&printer_);
    document_->setPageSize(body_.size());
    const mail_file::PrintedBody& body = pages_.body;
    body.is_page ? document_->SetPage(ToQt(body.page.html)) : document_->setPlainText(ToQt(body.text));
    KeepScreenSizes(kResolution, *document_);
    KeepWithin(body_.width() * kScreenDots / kResolution, *document_);
  }

  // What is still wider than the page makes all of it smaller.
  bool LayOutWithin() {
    if (!LayOut() || (!is_cut_ && PartFromWordsBefore(*document_) && !LayOut())) return false;
    const double width = is_cut_ ? 0 : document_->size().width();
    if (width <= body_.width()) return true;
    shrunk_ = std::min(width / body_.width(), kMostShrunk);
    document_->setPageSize(body_.size() * shrunk_);
    if (!LayOut()) return false;
    is_cut_ = is_cut_ || document_->size().width() > body_.width() * shrunk_ + 1;
    return true;
  }

  // The toolkit lays out as far as it is asked about a block. Where its numbers end they begin anew, so that a block
  // stands above the one before. False after a cancel.
  bool LayOut() {
    const double height = document_->pageSize().height();
    const double most = mail_file::kMostPages * height;
    double bottom = 0;
    for (auto place = document_->rootFrame()->begin(); !place.atEnd() && !is_cut_; ++place) {
      if (IsCancelled()) return false;
      if (!place.currentBlock().isValid()) continue;  // a table; the block behind it tells where it ends
      const double top = document_->documentLayout()->blockBoundingRect(place.currentBlock()).top();
      is_cut_ = top < bottom || top >= most;
      if (!is_cut_) bottom = top;
    }
    const int pages = is_cut_ ? static_cast<int>(bottom / height) + 1 : document_->pageCount();
    count_ = std::clamp(pages, 1, mail_file::kMostPages);
    is_cut_ = is_cut_ || pages != count_;
    return !IsCancelled();
  }

  std::vector<int> WantedPages() const {
    const QPageRanges ranges = printer_.printRange() == QPrinter::PageRange ? printer_.pageRanges() : QPageRanges();
    std::vector<int> wanted;
    for (int page = 0; page < count_; ++page) {
      if (ranges.isEmpty() || ranges.contains(page + 1)) wanted.push_back(page);
    }
    return wanted;
  }

  bool IsCancelled() const { return watch_.cancel.Requested() != platform::Stop::kNone; }

  void Draw(int page) {
    DrawHeading();
    DrawFoot(page);
    painter_.save();
    const QRectF part(QPointF(0, page * document_->pageSize().height()), document_->pageSize());
    painter_.translate(body_.topLeft());
    painter_.scale(1 / shrunk_, 1 / shrunk_);
    painter_.translate(-part.topLeft());
    painter_.setClipRect(part);
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = part.adjusted(0, 1, 0, -1);            // lines that only touch the page are on another
    context.palette.setColor(QPalette::Text, Qt::black);  // on paper, whatever the window's colours are
    document_->documentLayout()->draw(&painter_, context);
    painter_.restore();
  }

  void DrawFoot(int page) {
    const QString number = QString("%1/%2").arg(page + 1).arg(count_);
    QRect line(room_.left(), room_.bottom() - line_, room_.width(), line_);
    painter_.drawText(line, Qt::AlignRight | Qt::AlignBottom, number);
    if (page + 1 < count_) return;
    const QFontMetrics metrics(painter_.font(), &printer_);
    line.setWidth(line.width() - metrics.horizontalAdvance(number + "  "));
    for (std::size_t n = printed_.left_out.size(); n-- > 0;) {
      painter_.drawText(line, Qt::AlignLeft | Qt::AlignBottom,
                        metrics.elidedText(InWords(printed_.left_out[n]), Qt::ElideRight, line.width()));
      line.translate(0, -line_);
    }
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
  const MessagePages& pages_;
  const mail_file::PrintForm& form_;
  const PrintWatch& watch_;
  PrintedMessage printed_;
  std::unique_ptr<ForeignPage> document_;
  QPainter painter_;
  QRect room_;  // between the margins
  QRect body_;  // of it
  int line_ = 0;
  int count_ = 0;
  double shrunk_ = 1;    // so many times
  bool is_cut_ = false;  // at the last page that can be laid out, or at the right
};

// Draws by way of `whole`, which sees to the file.
PrintedMessage PrintBy(QPrinter& printer, const MessagePages& pages, const std::filesystem::path& told,
                       const PrintWatch& watch,
                       const std::function<Result<int>(const std::function<Result<int>()>& print)>& whole) {
  PrintedMessage printed{.code = PrintCode::kNotBegun};
  const auto end = whole([&]() -> Result<int> {
    printed = DrawMessage(printer, pages, watch);
    if (printed.code == PrintCode::kPrinted) return printed.pages;
    if (printed.code == PrintCode::kCancelled) return Error{Failure::kTryAgain, "Printing was cancelled."};
    return printed.error ? *printed.error : CannotPrint(told);
  });
  if (end) return printed;
  if (printed.code == PrintCode::kPrinted) printed.code = PrintCode::kNotWritten;  // drawn, and not written
  printed.error = end.error();
  return printed;
}

}  // namespace

Result<MessagePages> ReadPages(const mail_file::MailMessage& message, const mail_file::PrintForm& form,
                               std::size_t most, const platform::CancelToken& cancel) {
  auto body = mail_file::ReadPrintedBody(message, form.format, most, &cancel);
  if (!body) return body.error();
  auto pictures = DecodePictures(body->page.pictures, cancel);
  return MessagePages{form, *std::move(body), std::move(pictures)};
}

PrintedMessage DrawMessage(QPrinter& printer, const MessagePages& pages, const PrintWatch& watch) {
  SetUp(printer, pages.form);
  return Pages(printer, pages, watch).Print();
}

PrintedMessage PrintMessageFile(QPrinter& printer, const MessagePages& pages, const platform::OwnFiles& own,
                                const PrintWatch& watch) {
  const bool is_file = printer.outputFormat() == QPrinter::PdfFormat;
  if (is_file && printer.outputFileName().isEmpty()) return {.code = PrintCode::kNoPrinter};
  const auto file = is_file ? PathFromQt(printer.outputFileName()) : std::filesystem::path();
  if (const auto other = mail_file::CheckIsNotMessage(file, pages.form.file); !other)
    return {.code = PrintCode::kNotBegun, .error = other.error()};
  return PrintBy(printer, pages, file, watch, [&](const auto& print) { return PrintWhole(printer, own, print); });
}

PrintedMessage PrintMessageInto(QPrinter& printer, const MessagePages& pages, int fd, const std::filesystem::path& told,
                                const PrintWatch& watch) {
  return PrintBy(printer, pages, told, watch, [&](const auto& print) { return PrintInto(printer, fd, told, print); });
}

}  // namespace quillcast::desktop
