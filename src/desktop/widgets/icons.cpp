#include "desktop/widgets/icons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <algorithm>
#include <array>
#include <utility>

namespace quillcast::desktop {
namespace {

struct Drawing {
  std::string_view name;
  const char* paths;  // on a field of 24 by 24, drawn with a line 1.7 wide
};

constexpr auto kDrawings = std::to_array<Drawing>({
    {"account", "<circle cx='12' cy='8' r='4'/><path d='M4 20c1-4 4-6 8-6s7 2 8 6'/>"},
    {"attach",
     "<path d='M19 11l-7.5 7.5a4.5 4.5 0 0 1-6.4-6.4L13 4.2a3 3 0 0 1 4.3 4.3l-7.8 7.8a1.5 1.5 0 0 1-2.1-2.1L14 "
     "7.6'/>"},
    {"bold", "<path stroke-width='2.4' d='M7 5h6a3.5 3.5 0 0 1 0 7H7zM7 12h7a3.5 3.5 0 0 1 0 7H7z'/>"},
    {"bullets",
     "<path d='M9 6h11M9 12h11M9 18h11'/><g fill='#000'><circle cx='4.5' cy='6' r='.8'/><circle cx='4.5' cy='12' "
     "r='.8'/><circle cx='4.5' cy='18' r='.8'/></g>"},
    {"center", "<path d='M4 6h16M7 10h10M4 14h16M7 18h10'/>"},
    {"clear", "<path d='M6 6l12 12M18 6L6 18'/>"},
    {"colour", "<path d='M6.5 16L12 4l5.5 12M8.5 12h7'/><path stroke-width='3' d='M4 20.5h16'/>"},
    {"copy",
     "<rect x='8' y='8' width='12' height='12' rx='2'/><path d='M16 8V6a2 2 0 0 0-2-2H6a2 2 0 0 0-2 2v8a2 2 0 0 0 2 "
     "2h2'/>"},
    {"cut", "<circle cx='6' cy='6' r='2.5'/><circle cx='6' cy='18' r='2.5'/><path d='M8.2 7.5L20 17M8.2 16.5L20 7'/>"},
    {"failure", "<path d='M8 3h8l5 5v8l-5 5H8l-5-5V8zM9 9l6 6M15 9l-6 6'/>"},
    {"find", "<circle cx='10.5' cy='10.5' r='6'/><path d='M15 15l5.5 5.5'/>"},
    {"groups",
     "<circle cx='9' cy='8' r='3.5'/><path d='M2.5 20c.6-4 3-6 6.500-6s5.900 2 6.500 6'/><path d='M16 4.800a3.500 "
     "3.500 0 0 1 0 6.400M17.500 14.300c2.300.8 3.600 2.700 4 5.700'/>"},
    {"history", "<path d='M4 12a8 8 0 1 0 2.500-5.800L4 8.500M4 4v4.500h4.500'/><path d='M12 7.500V12l3 2'/>"},
    {"indent", "<path d='M4 5h16M11 10h9M11 14h9M4 19h16M4 9.500l3.500 2.500L4 14.500'/>"},
    {"information", "<circle cx='12' cy='12' r='9'/><path d='M12 11v6'/><circle cx='12' cy='7.5' r='.6'/>"},
    {"italic", "<path d='M10 5h8M6 19h8M14 5l-4 14'/>"},
    {"left", "<path d='M4 6h16M4 10h10M4 14h16M4 18h10'/>"},
    {"link",
     "<path d='M10 14a4 4 0 0 0 5.700 0l3-3a4 4 0 0 0-5.700-5.700l-1 1M14 10a4 4 0 0 0-5.700 0l-3 3A4 4 0 0 0 11 "
     "18.700l1-1'/>"},
    {"merge",
     "<path d='M8 4c-2 0-2.500 1-2.500 3v2c0 2-1 3-2 3 1 0 2 1 2 3v2c0 2 .5 3 2.500 3M16 4c2 0 2.500 1 2.500 3v2c0 2 1 "
     "3 2 3-1 0-2 1-2 3v2c0 2-.5 3-2.500 3'/><circle cx='12' cy='12' r='1.200' fill='#000'/>"},
    {"numbers",
     "<path d='M10 6h10M10 12h10M10 18h10M4 4.500l1.500-.5v4.500M3.800 11h2.400l-2.400 3.500h2.600M3.800 "
     "16.500h2.400l-1.200 1.500c1.500 0 1.500 2.500-1.200 2.200'/>"},
    {"open",
     "<path d='M3.500 18V6a1.500 1.500 0 0 1 1.500-1.500h4.500l2 2.500H18A1.500 1.500 0 0 1 19.500 8.500V10M3.500 "
     "18l3-8H22l-3 8.500H4'/>"},
    {"outdent", "<path d='M4 5h16M11 10h9M11 14h9M4 19h16M7.500 9.500L4 12l3.500 2.500'/>"},
    {"paste", "<rect x='5' y='5' width='14' height='16' rx='2'/><path d='M9 5.500V3.500h6v2M9 12h6M9 16h4'/>"},
    {"picture",
     "<rect x='3.500' y='5' width='17' height='14' rx='2'/><circle cx='8.500' cy='10' r='1.500'/><path d='M4 17l5-4 "
     "3.500 3 3-2.500 4.500 4'/>"},
    {"preview",
     "<path d='M2.500 12C5 7.500 8.200 5.500 12 5.500s7 2 9.500 6.500c-2.500 4.500-5.700 6.500-9.500 6.500S5 16.500 "
     "2.500 12z'/><circle cx='12' cy='12' r='3'/>"},
    {"print",
     "<path d='M7 8V3.500h10V8M7 17H4.500A1.500 1.500 0 0 1 3 15.500v-6A1.500 1.500 0 0 1 4.500 8h15A1.500 1.500 0 0 1 "
     "21 9.500v6a1.500 1.500 0 0 1-1.500 1.500H17'/><path d='M7 13.500h10v7H7z'/>"},
    {"redo", "<path d='M20 9H9a5 5 0 0 0 0 10h7M16 5l4 4-4 4'/>"},
    {"remove", "<path d='M5 7h14M10 4h4M7 7l1 13h8l1-13M10.500 11v5.500M13.500 11v5.500'/>"},
    {"right", "<path d='M4 6h16M10 10h10M4 14h16M10 18h10'/>"},
    {"save",
     "<path d='M5 3.500h11L20.500 8v11a1.500 1.500 0 0 1-1.500 1.500H5A1.500 1.500 0 0 1 3.500 19V5A1.500 1.500 0 0 1 "
     "5 3.500z'/><path d='M7.500 3.500V9h8V3.500M7 20.500v-7h10v7'/>"},
    {"send", "<path d='M3.500 11.500L20.500 4l-5 16.500-4-7zM11.500 13.500l9-9.500'/>"},
    {"source", "<path d='M8.500 7L3.500 12l5 5M15.500 7l5 5-5 5M13.500 4.500l-3 15'/>"},
    {"table",
     "<rect x='3.500' y='4.500' width='17' height='15' rx='1.500'/><path d='M3.500 9.500h17M3.500 14.500h17M9.200 "
     "4.500v15M14.800 4.500v15'/>"},
    {"underline", "<path d='M7 4v7a5 5 0 0 0 10 0V4M5 20.500h14'/>"},
    {"undo", "<path d='M4 9h11a5 5 0 0 1 0 10H8M8 5L4 9l4 4'/>"},
    {"warning", "<path d='M12 3.500L21.500 20h-19zM12 10v5'/><circle cx='12' cy='17.500' r='.5'/>"},
});

class LineIcon final : public QIconEngine {
 public:
  LineIcon(const char* paths, QColor colour) : paths_(paths), colour_(std::move(colour)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    const QString colour =
        (colour_.isValid() ? colour_ : QApplication::palette().color(group, QPalette::ButtonText)).name();
    QString svg = QString(
                      "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 24 24' fill='none' stroke='%1' "
                      "stroke-width='1.7' stroke-linecap='round' stroke-linejoin='round'>%2</svg>")
                      .arg(colour, QString::fromLatin1(paths_).replace("#000", colour));
    QSvgRenderer(svg.toUtf8()).render(painter, rect);
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap map(size);
    map.fill(Qt::transparent);
    QPainter painter(&map);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return map;
  }
  QIconEngine* clone() const override { return new LineIcon(paths_, colour_); }

 private:
  const char* paths_;
  QColor colour_;  // invalid for that of the text on buttons
};

}  // namespace

QIcon Icon(std::string_view name, const QColor& colour) {
  const auto* const drawing =
      std::find_if(kDrawings.begin(), kDrawings.end(), [&](const Drawing& row) { return row.name == name; });
  return drawing == kDrawings.end() ? QIcon() : QIcon(new LineIcon(drawing->paths, colour));
}

QIcon ProgramIcon() {
  constexpr const char* kSign =
      "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 64 64'><rect width='64' height='64' rx='14' "
      "fill='#1f5f8b'/>"
      "<path d='M12 22a4 4 0 0 1 4-4h32a4 4 0 0 1 4 4v22a4 4 0 0 1-4 4H16a4 4 0 0 1-4-4z' fill='#fff'/>"
      "<path d='M13 21l19 15 19-15' fill='none' stroke='#1f5f8b' stroke-width='3.500' stroke-linejoin='round'/>"
      "<path d='M50 8c-9 2-16 9-19 20l3 1c8-3 14-10 16-21z' fill='#f2b84b'/></svg>";
  QIcon icon;
  for (const int side : {16, 24, 32, 48, 64, 128}) {
    QPixmap map(side, side);
    map.fill(Qt::transparent);
    QPainter painter(&map);
    QSvgRenderer(QByteArray(kSign)).render(&painter);
    icon.addPixmap(map);
  }
  return icon;
}

}  // namespace quillcast::desktop
