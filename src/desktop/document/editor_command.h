// What the editor does at a command, to the text or to the table that the caret is in.
#pragma once

namespace quillcast::desktop {

// For HtmlEditor::Run, which knows the engine's name of each.
enum class EditorCommand {
  kBold,
  kCopy,
  kCut,
  kDelete,
  kFindText,
  kIndent,
  kItalic,
  kAlignCentre,
  kAlignLeft,
  kAlignRight,
  kNumberedList,
  kOutdent,
  kPaste,
  kRedo,
  kRemoveFormatting,
  kSelectAll,
  kUnderline,
  kUndo,
  kRemoveHyperlink,
  kBulletedList,
  kNormal,  // and the other styles of a paragraph
  kHeading1,
  kHeading2,
  kHeading3,
  kQuote,
  kPreformatted,
};

// Changes of the table that the caret is in.
enum class TableEdit {
  kRowAbove,
  kRowBelow,
  kColumnLeft,
  kColumnRight,
  kDeleteRow,
  kDeleteColumn,
  kDeleteTable,
};

}  // namespace quillcast::desktop
