#include "desktop/widgets/print_whole.h"

#include <QFile>
#include <QPrinter>
#include <algorithm>
#include <string>

#include "desktop/widgets/qt_text.h"
#include "platform/file.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kProbe = 1 << 16;  // bytes: more than any block of a disk that may still have room

// The toolkit does not tell of a disk that is full: a file that is whole says so at its end. Where it is not, one write
// more brings the system's reason.
Result<void> CheckWhole(const QString& pdf, const std::filesystem::path& told) {
  QFile file(pdf);
  constexpr qint64 kEnd = 16;
  if (!file.open(QIODevice::ReadWrite)) return CannotPrint(told);
  const bool is_whole = file.seek(std::max<qint64>(0, file.size() - kEnd)) && file.readAll().contains("%%EOF");
  if (is_whole) return {};
  if (auto written = platform::WriteAll(file.handle(), told, std::string(kProbe, '\n')); !written) return written;
  return CannotPrint(told);
}

}  // namespace

Error CannotPrint(const std::filesystem::path& file) {
  const std::string where = file.empty() ? "the printer" : file.string();
  return {Failure::kIo, Say("Cannot print to {}.", where), "Choose another place, or free some space there."};
}

// The toolkit takes names alone.
Result<int> PrintInto(QPrinter& printer, int fd, const std::filesystem::path& told,
                      const std::function<Result<int>()>& print) {
  const QString name = QString("/proc/self/fd/%1").arg(fd);
  printer.setOutputFileName(name);
  auto printed = print();
  if (!printed && printed.error().failure != Failure::kIo) return printed;
  if (const auto whole = CheckWhole(name, told); !whole) return whole.error();
  return printed;
}

Result<int> PrintWhole(QPrinter& printer, const platform::OwnFiles& own, const std::function<Result<int>()>& print) {
  if (printer.outputFormat() != QPrinter::PdfFormat) return print();
  const auto file = PathFromQt(printer.outputFileName());
  Result<int> printed = 0;
  const auto placed = platform::ReplaceChosenFile(file, own, [&](int fd) -> Result<void> {
    printed = PrintInto(printer, fd, file, print);
    return printed ? Result<void>() : printed.error();
  });
  return placed ? printed : placed.error();
}

}  // namespace quillcast::desktop
