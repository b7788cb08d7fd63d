#include "desktop/recipients/print_recipients.h"

#include <QPainter>
#include <QPrinter>
#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "desktop/widgets/print_whole.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kReadAtOnce = 1000;
constexpr int kTextSize = 9;  // points
constexpr double kLineHeight = 1.3;
// Where the columns begin, in parts of the width: number, first name, last name, address.
constexpr std::array<double, 5> kColumns = {0, 0.09, 0.30, 0.52, 1};

Error Cancelled() { return {Failure::kTryAgain, "Printing was cancelled.", {}}; }

// Draws line after line, and begins a page where one is full.
class Pages {
 public:
  Pages(QPrinter& printer, QString heading) : printer_(printer), heading_(std::move(heading)) {}

  bool Begin() {
    if (!painter_.begin(&printer_)) return false;
    painter_.setFont(QFont(painter_.font().family(), kTextSize));
    line_height_ = static_cast<int>(painter_.fontMetrics().height() * kLineHeight);
    return BeginPage();
  }
  bool AddLine(const std::array<QString, 4>& texts) {
    if (top_ + line_height_ > painter_.viewport().height() && !(printer_.newPage() && BeginPage())) return false;
    for (std::size_t i = 0; i < texts.size(); ++i) DrawCell(i, texts[i]);
    top_ += line_height_;
    return true;
  }
  bool End() { return painter_.end(); }
  int count() const { return count_; }

 private:
  bool BeginPage() {
    top_ = 0;
    const QRect line(0, 0, painter_.viewport().width(), line_height_);
    const QString page = QString::number(++count_);
    const int room = line.width() - painter_.fontMetrics().horizontalAdvance(page + "  ");
    painter_.drawText(line, Qt::AlignRight | Qt::AlignVCenter, page);
    painter_.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                      painter_.fontMetrics().elidedText(heading_, Qt::ElideRight, room));
    painter_.drawLine(line.bottomLeft(), line.bottomRight());
    top_ = 2 * line_height_;
    return true;
  }
  void DrawCell(std::size_t column, const QString& text) {
    const int width = painter_.viewport().width();
    const int left = static_cast<int>(kColumns[column] * width);
    const int right = static_cast<int>(kColumns[column + 1] * width) - painter_.fontMetrics().averageCharWidth();
    const QRect cell(left, top_, right - left, line_height_);
    painter_.drawText(cell, Qt::AlignLeft | Qt::AlignVCenter,
                      painter_.fontMetrics().elidedText(text, Qt::ElideRight, cell.width()));
  }

  QPrinter& printer_;
  QString heading_;
  QPainter painter_;
  int line_height_ = 0;
  int top_ = 0;
  int count_ = 0;
};

std::array<QString, 4> TextsOf(std::size_t number, const recipients::GridRow& row) {
  return {QString::number(number), ToQt(platform::Printable(row.first_name)), ToQt(platform::Printable(row.last_name)),
          ToQt(platform::Printable(row.email))};
}

Result<int> PrintRows(Pages& pages, const std::filesystem::path& file, const recipients::RecipientStore& store,
                      std::span<const std::int64_t> keys, const platform::CancelToken& cancel,
                      const std::function<void(std::size_t)>& progress) {
  if (!pages.Begin()) return CannotPrint(file);
  std::size_t printed = 0;
  for (std::size_t at = 0; at < keys.size(); at += kReadAtOnce) {
    const auto rows = store.RowsOfKeys(keys.subspan(at, std::min(kReadAtOnce, keys.size() - at)));
    if (cancel.Requested() != platform::Stop::kNone) return Cancelled();
    if (!rows) return rows.error();
    for (const recipients::GridRow& row : *rows) {
      if (row.id != 0 && !pages.AddLine(TextsOf(++printed, row))) return CannotPrint(file);
    }
    progress(at + rows->size());
  }
  return pages.count();
}

}  // namespace

Result<int> PrintRecipients(QPrinter& printer, const recipients::RecipientStore& store, const QString& heading,
                            std::span<const std::int64_t> keys, const platform::OwnFiles& own,
                            const platform::CancelToken& cancel,
                            const std::function<void(std::size_t done)>& progress) {
  const bool is_file = printer.outputFormat() == QPrinter::PdfFormat;
  const std::filesystem::path file = is_file ? PathFromQt(printer.outputFileName()) : std::filesystem::path();
  const auto print = [&]() -> Result<int> {
    Pages pages(printer, heading);
    auto printed = PrintRows(pages, file, store, keys, cancel, progress);
    if (!printed && pages.count() > 0) printer.abort();
    const bool ended = pages.End();
    return printed && !ended ? CannotPrint(file) : printed;
  };
  return PrintWhole(printer, own, print);
}

}  // namespace quillcast::desktop
