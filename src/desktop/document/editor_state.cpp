#include "desktop/document/editor_state.h"

namespace quillcast::desktop {

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
  state.link = map["link"].toString();
  state.link_text = map["linkText"].toString();
  state.selected = map["selected"].toString();
  return state;
}

}  // namespace quillcast::desktop
