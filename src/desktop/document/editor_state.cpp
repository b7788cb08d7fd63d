#include "desktop/document/editor_state.h"

#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

PlacedPicture PictureFrom(const QVariantMap& map) {
  const auto text = [&map](const char* key) { return FromQt(map[key].toString()); };
  const std::string border = text("border");
  return {.address = map["address"].toString(),
          .choice = {.alternative = text("alternative"),
                     .width = text("width"),
                     .height = text("height"),
                     .border = border.empty() ? "0" : border,
                     .align = text("align")},
          .natural = {map["naturalWidth"].toInt(), map["naturalHeight"].toInt()}};
}

// "rgb(255, 0, 0)", as the engine has it.
QColor ColourFrom(const QString& text) {
  const QStringList parts = text.section('(', 1).section(')', 0, 0).split(',');
  if (parts.size() < 3) return Qt::black;
  return {parts[0].toInt(), parts[1].toInt(), parts[2].toInt()};
}

// The style of a paragraph by the element that the engine makes of it.
void TakeBlock(EditorState& state, const QString& element) {
  state.normal = element.isEmpty() || element == u"p" || element == u"div";
  state.heading1 = element == u"h1";
  state.heading2 = element == u"h2";
  state.heading3 = element == u"h3";
  state.quote = element == u"blockquote";
  state.preformatted = element == u"pre";
}

}  // namespace

EditorState EditorState::From(const QVariantMap& map) {
  EditorState state;
  state.bold = map["bold"].toBool();
  state.italic = map["italic"].toBool();
  state.underline = map["underline"].toBool();
  state.bullets = map["bullets"].toBool();
  state.numbers = map["numbers"].toBool();
  state.left = map["left"].toBool();
  state.center = map["center"].toBool();
  state.right = map["right"].toBool();
  state.in_table = map["inTable"].toBool();
  state.can_undo = map["canUndo"].toBool();
  state.can_redo = map["canRedo"].toBool();
  state.font = map["font"].toString().remove('"').section(',', 0, 0).trimmed();
  state.size = map["size"].toString().isEmpty() ? 3 : map["size"].toInt();
  state.strike = map["strike"].toBool();
  state.colour = ColourFrom(map["color"].toString());
  TakeBlock(state, map["block"].toString());
  state.picture = PictureFrom(map["picture"].toMap());
  state.room = map["room"].toInt();
  state.link = map["link"].toString();
  state.link_text = map["linkText"].toString();
  state.selected = map["selected"].toString();
  return state;
}

}  // namespace quillcast::desktop
