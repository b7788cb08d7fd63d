#include "desktop/widgets/note.h"

#include <array>

#include "desktop/widgets/contrast.h"

namespace quillcast::desktop {
namespace {

struct Row {
  const char* sign_name;
  const char* sign;
  const char* light;  // the ground in a light theme
  const char* dark;
};

constexpr std::array<Row, 3> kRows = {{{"information", "#1f6fb2", "#e4eff9", "#1f3346"},
                                       {"warning", "#b36b00", "#fdf1d3", "#403318"},
                                       {"failure", "#c22f27", "#fce4e2", "#47262a"}}};

const Row& RowOf(NoteKind kind) { return kRows.at(static_cast<std::size_t>(kind)); }

bool IsDark(const QPalette& palette) {
  const QColor window = palette.color(QPalette::Window);
  return Contrast(Qt::white, window) > Contrast(Qt::black, window);
}

}  // namespace

NoteColours PanelColours(NoteKind kind, const QPalette& palette) {
  const Row& row = RowOf(kind);
  const QColor ground(IsDark(palette) ? row.dark : row.light);
  return {ground, Readable(palette.color(QPalette::WindowText), ground), Readable(QColor(row.sign), ground)};
}

QColor LineColour(NoteKind kind, const QPalette& palette) {
  const QColor window = palette.color(QPalette::Window);
  const QColor plain = palette.color(QPalette::WindowText);
  return Readable(kind == NoteKind::kInformation ? plain : QColor(RowOf(kind).sign), window);
}

const char* SignName(NoteKind kind) { return RowOf(kind).sign_name; }

}  // namespace quillcast::desktop
