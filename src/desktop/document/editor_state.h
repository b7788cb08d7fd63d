// What the toolbar shows of the place where the caret is.
#pragma once

#include <QString>
#include <QVariantMap>

namespace quillcast::desktop {

// As it stands here: a caret in plain text of the usual size.
struct EditorState {
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool bullets = false;
  bool numbers = false;
  bool left = false;
  bool center = false;
  bool right = false;
  bool in_table = false;
  bool can_undo = false;
  bool can_redo = false;
  QString font;  // as the document names it, without quotes
  int size = 3;  // 1 to 7
  QString link;  // the address of the link round the caret, empty for none
  QString link_text;
  QString selected;  // the selected text

  // `map` is what state() of the editing script gives.
  static EditorState From(const QVariantMap& map);
};

}  // namespace quillcast::desktop
