#include "desktop/shell/command_table.h"

#include <QCoreApplication>
#include <algorithm>

#include "desktop/shell/commands.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

using enum CommandId;
using enum Menu;

constexpr Place UnderLine(Menu menu) {
  Place place = menu;
  place.under_line = true;
  return place;
}

template <EditorCommand command>
constexpr Command Editing(CommandId id, std::array<int, 2> numbers, Place place, std::string_view text,
                          std::string_view icon, std::string_view keys, int code,
                          bool EditorState::*checked = nullptr) {
  return {id, numbers, {}, place, text, icon, keys, Edit<command>, code, checked};
}

template <TableEdit edit>
constexpr Command Changing(CommandId id, Place place, std::string_view text) {
  return {id, {}, {}, place, text, {}, {}, ChangeTableBy<edit>};
}

// Inserts the merge tag of a field.
template <std::size_t field>
constexpr Command Tag(CommandId id, int number) {
  return {id, {number},          document::kMergeFields[field].command, kMergeTag, recipients::kFields[field].label, {},
          {}, InsertTagOf<field>};
}

// A class, so that the texts are collected for catalogues under its name.
class Table {
  Q_DECLARE_TR_FUNCTIONS(CommandBar)
 public:
  // The numbers of the merge tags do not follow their order: Address1 and the additional fields came later.
  static constexpr auto kRows = std::to_array<Command>({
      {kNew, {}, "", kFile, QT_TR_NOOP("&New"), "", "Ctrl+N", NewMessage},
      {kOpen, {1, 83}, "", kFile, QT_TR_NOOP("&Open…"), "open", "Ctrl+O", OpenDocument},
      {kSave, {2, 84}, "", kFile, QT_TR_NOOP("&Save"), "save", "Ctrl+S", SaveDocument},
      {kSaveAs, {}, "", kFile, QT_TR_NOOP("Save &As…"), "", "Ctrl+Shift+S", SaveDocumentAs},
      {kPrint, {4, 85}, "", kFile, QT_TR_NOOP("&Print…"), "print", "Ctrl+P", PrintMessage},
      {kProperties, {5, 86}, "", kFile, QT_TR_NOOP("P&roperties…"), "information", "", ShowProperties},
      {kExit, {6}, "", UnderLine(kFile), QT_TR_NOOP("E&xit"), "", "Ctrl+Q", CloseWindow},
      Editing<EditorCommand::kUndo>(kUndo, {7, 87}, kEdit, QT_TR_NOOP("&Undo"), "undo", "Ctrl+Z", 5049),
      Editing<EditorCommand::kRedo>(kRedo, {8, 88}, kEdit, QT_TR_NOOP("&Redo"), "redo", "Ctrl+Shift+Z", 5033),
      Editing<EditorCommand::kCut>(kCut, {9, 89}, UnderLine(kEdit), QT_TR_NOOP("Cu&t"), "cut", "Ctrl+X", 5003),
      Editing<EditorCommand::kCopy>(kCopy, {10, 90}, kEdit, QT_TR_NOOP("&Copy"), "copy", "Ctrl+C", 5002),
      Editing<EditorCommand::kPaste>(kPaste, {11, 91}, kEdit, QT_TR_NOOP("&Paste"), "paste", "Ctrl+V", 5032),
      {kPastePlain, {}, "", kEdit, QT_TR_NOOP("Paste &without Formatting"), "", "Ctrl+Shift+V", PastePlain},
      Editing<EditorCommand::kDelete>(kDelete, {12, 92}, kEdit, QT_TR_NOOP("&Delete"), "remove", "Del", 5004),
      Editing<EditorCommand::kSelectAll>(kSelectAll, {13}, kEdit, QT_TR_NOOP("Select &All"), "", "Ctrl+A", 5035),
      Editing<EditorCommand::kFindText>(kFind, {14, 93}, UnderLine(kEdit), QT_TR_NOOP("&Find…"), "find", "Ctrl+F",
                                        5008),
      {kSource, {}, "", kEdit, QT_TR_NOOP("HTML &Source"), "source", "Ctrl+Shift+U", SwitchSource},
      {kZoomIn, {}, "", kZoom, QT_TR_NOOP("Zoom &In"), "", "Ctrl++", ZoomIn},
      {kZoomOut, {}, "", kZoom, QT_TR_NOOP("Zoom &Out"), "", "Ctrl+-", ZoomOut},
      {kZoomReset, {}, "", kZoom, QT_TR_NOOP("&Actual Size"), "", "Ctrl+0", ZoomReset},
      {kDateTime, {15}, "", kInsert, QT_TR_NOOP("&Date and Time…"), "", "", InsertDateTime},
      {kTemplate, {16}, "", kInsert, QT_TR_NOOP("T&emplate…"), "", "", BeginFromTemplate},
      {kAddAttachment,
       {17},
       "FileAttachmentButton",
       kInsert,
       QT_TR_NOOP("&Attachment…"),
       "attach",
       "Ctrl+Shift+A",
       AddAttachments},
      {kDeleteAttachment,
       {18},
       "DeleteAttachmentButton",
       kInsert,
       QT_TR_NOOP("&Remove Attachment"),
       "remove",
       "",
       DeleteAttachment},
      Tag<0>(kMergeEmail, 67),
      Tag<1>(kMergeTitle, 68),
      Tag<2>(kMergeFirstName, 69),
      Tag<3>(kMergeLastName, 70),
      Tag<4>(kMergeCountry, 71),
      Tag<5>(kMergeState, 72),
      Tag<6>(kMergeCity, 73),
      Tag<7>(kMergeAddress1, 104),
      Tag<8>(kMergeAddress2, 74),
      Tag<9>(kMergeZipCode, 75),
      Tag<10>(kMergePhone, 76),
      Tag<11>(kMergeFax, 77),
      Tag<12>(kMergeCompany, 78),
      Tag<13>(kMergeJobTitle, 79),
      Tag<14>(kMergeWebSite, 80),
      Tag<15>(kMergeAdditional1, 105),
      Tag<16>(kMergeAdditional2, 106),
      Tag<17>(kMergeAdditional3, 107),
      {kPicture,
       {23},
       "PictureButton",
       UnderLine(kInsert),
       QT_TR_NOOP("&Picture…"),
       "picture",
       "Ctrl+Shift+P",
       InsertPicture},
      {kHyperlink, {24}, "HyperlinkButton", kInsert, QT_TR_NOOP("&Hyperlink…"), "link", "Ctrl+K", InsertHyperlink},
      {kLine, {21}, "LineButton", kInsert, QT_TR_NOOP("Horizontal &Line…"), "", "", InsertLine},
      {kTable, {22}, "TableButton", kInsert, QT_TR_NOOP("&Table…"), "table", "", InsertTable},
      {kFont, {19}, "FontButton", kFormat, QT_TR_NOOP("&Font…"), "", "", ChooseFont},
      {kTextColour, {}, "", kFormat, QT_TR_NOOP("Te&xt Colour…"), "colour", "", ChooseColour},
      {kBody, {20}, "BodyButton", kFormat, QT_TR_NOOP("&Page Colours…"), "", "", ChooseBodyColours},
      Editing<EditorCommand::kNormal>(kNormal, {}, kParagraphStyle, QT_TR_NOOP("&Normal"), "", "Ctrl+Alt+0", 0,
                                      &EditorState::normal),
      Editing<EditorCommand::kHeading1>(kHeading1, {}, kParagraphStyle, QT_TR_NOOP("Heading &1"), "", "Ctrl+Alt+1", 0,
                                        &EditorState::heading1),
      Editing<EditorCommand::kHeading2>(kHeading2, {}, kParagraphStyle, QT_TR_NOOP("Heading &2"), "", "Ctrl+Alt+2", 0,
                                        &EditorState::heading2),
      Editing<EditorCommand::kHeading3>(kHeading3, {}, kParagraphStyle, QT_TR_NOOP("Heading &3"), "", "Ctrl+Alt+3", 0,
                                        &EditorState::heading3),
      Editing<EditorCommand::kQuote>(kQuote, {}, kParagraphStyle, QT_TR_NOOP("&Quote"), "", "", 0, &EditorState::quote),
      Editing<EditorCommand::kPreformatted>(kPreformatted, {}, kParagraphStyle, QT_TR_NOOP("&Preformatted"), "", "", 0,
                                            &EditorState::preformatted),
      Editing<EditorCommand::kBold>(kBold, {27, 94}, UnderLine(kFormat), QT_TR_NOOP("&Bold"), "bold", "Ctrl+B", 5000,
                                    &EditorState::bold),
      Editing<EditorCommand::kItalic>(kItalic, {28, 95}, kFormat, QT_TR_NOOP("&Italic"), "italic", "Ctrl+I", 5023,
                                      &EditorState::italic),
      Editing<EditorCommand::kUnderline>(kUnderline, {29, 96}, kFormat, QT_TR_NOOP("&Underline"), "underline", "Ctrl+U",
                                         5048, &EditorState::underline),
      Editing<EditorCommand::kAlignLeft>(kAlignLeft, {30, 97}, UnderLine(kFormat), QT_TR_NOOP("Align &Left"), "left",
                                         "Ctrl+L", 5025, &EditorState::left),
      Editing<EditorCommand::kAlignCentre>(kCentre, {31, 98}, kFormat, QT_TR_NOOP("&Centre"), "center", "Ctrl+E", 5024,
                                           &EditorState::center),
      Editing<EditorCommand::kAlignRight>(kAlignRight, {32, 99}, kFormat, QT_TR_NOOP("Align &Right"), "right", "Ctrl+R",
                                          5026, &EditorState::right),
      Editing<EditorCommand::kIndent>(kIndent, {33, 101}, kFormat, QT_TR_NOOP("I&ndent"), "indent", "Ctrl+]", 5018),
      Editing<EditorCommand::kOutdent>(kOutdent, {34, 100}, kFormat, QT_TR_NOOP("&Outdent"), "outdent", "Ctrl+[", 5031),
      Editing<EditorCommand::kBulletedList>(kBullets, {35, 102}, UnderLine(kFormat), QT_TR_NOOP("Bulleted Li&st"),
                                            "bullets", "Ctrl+Shift+8", 5051, &EditorState::bullets),
      Editing<EditorCommand::kNumberedList>(kNumbers, {36, 103}, kFormat, QT_TR_NOOP("Nu&mbered List"), "numbers",
                                            "Ctrl+Shift+7", 5030, &EditorState::numbers),
      Editing<EditorCommand::kRemoveHyperlink>(kRemoveHyperlink, {25}, UnderLine(kFormat),
                                               QT_TR_NOOP("Remove &Hyperlink"), "", "", 5050),
      Editing<EditorCommand::kRemoveFormatting>(kRemoveFormatting, {26}, kFormat, QT_TR_NOOP("Remove Forma&tting"), "",
                                                "Ctrl+Space", 5034),
      Changing<TableEdit::kRowAbove>(kRowAbove, kRowsAndColumns, QT_TR_NOOP("Row &Above")),
      Changing<TableEdit::kRowBelow>(kRowBelow, kRowsAndColumns, QT_TR_NOOP("Row &Below")),
      Changing<TableEdit::kColumnLeft>(kColumnLeft, kRowsAndColumns, QT_TR_NOOP("Column on the &Left")),
      Changing<TableEdit::kColumnRight>(kColumnRight, kRowsAndColumns, QT_TR_NOOP("Column on the &Right")),
      Changing<TableEdit::kDeleteRow>(kDeleteRow, UnderLine(kRowsAndColumns), QT_TR_NOOP("&Delete Row")),
      Changing<TableEdit::kDeleteColumn>(kDeleteColumn, kRowsAndColumns, QT_TR_NOOP("Delete &Column")),
      Changing<TableEdit::kDeleteTable>(kDeleteTable, kRowsAndColumns, QT_TR_NOOP("Delete &Table")),
      {kMailPreview, {37}, "", kMessage, QT_TR_NOOP("Preview in the &Mail Program"), "", "Shift+F5", PreviewAsMail},
      {kPreview, {}, "PreviewButton", kMessage, QT_TR_NOOP("&Preview…"), "preview", "F5", PreviewInside},
      {kSend, {38}, "SendButton", kMessage, QT_TR_NOOP("&Send…"), "send", "Ctrl+Return", Send},
      {kHistory, {41}, "HistoryButton", UnderLine(kMessage), QT_TR_NOOP("&History…"), "history", "Ctrl+H", ShowHistory},
      {kAccount, {39}, "EmailButton", kTools, QT_TR_NOOP("Mail &Account…"), "account", "", EditAccount},
      {kGroups, {40}, "GroupButton", kTools, QT_TR_NOOP("&Groups…"), "groups", "", ShowGroups},
      {kSignature, {42}, "SignatureButton", kTools, QT_TR_NOOP("&Signature…"), "", "", EditSignature},
      {kImport, {43}, "", kTools, QT_TR_NOOP("&Import Recipients…"), "", "", ImportRecipients},
      {kExport, {44}, "", kTools, QT_TR_NOOP("&Export Recipients…"), "", "", ExportRecipients},
      {kThreads, {52}, "", kTools, QT_TR_NOOP("&Thread Options…"), "", "", ShowThreads},
      {kSplash, {}, "", kTools, QT_TR_NOOP("Sp&lash at Start"), "", "", SwitchSplash},
      {kDomainTools, {53}, "", kTools, QT_TR_NOOP("&Domain Tools…"), "", "", ShowDomainTools},
      {kExtraForm1, {54}, "", kTools, QT_TR_NOOP("&Print Messages…"), "", "", PrintMessageFiles},
      {kExtraForm2, {55}, "", kTools, QT_TR_NOOP("Imp&ort Message…"), "", "", ImportMessage},
      {kExtraForm3, {56}, "", kTools, QT_TR_NOOP("Export &Message…"), "", "", ExportMessage},
      {kExtraForm4, {57}, "", kTools, QT_TR_NOOP("E&xtract from Messages…"), "", "", ExtractFromMessages},
      {kExtraForm5, {58}, "", kTools, QT_TR_NOOP("Test a Ser&ver…"), "", "", TestServer},
      {kHelpTopics, {59}, "", kHelp, QT_TR_NOOP("&Help"), "", "F1", ShowHelp},
      {kTutorial, {60}, "", kHelp, QT_TR_NOOP("Tuto&rial"), "", "", ShowTutorial},
      {kTips, {61}, "", kHelp, QT_TR_NOOP("&Tip of the Day"), "", "", ShowTips},
      {kSupport, {63}, "", kHelp, QT_TR_NOOP("&Support…"), "", "", AskForSupport},
      {kUpdate, {64}, "", kHelp, QT_TR_NOOP("Check for &Updates…"), "", "", CheckForUpdates},
      {kHomePage, {65}, "", kHelp, QT_TR_NOOP("Home &Page"), "", "", OpenHomePage},
      {kAbout, {66}, "", kHelp, QT_TR_NOOP("&About"), "", "", ShowAbout},
  });
};

constexpr std::span<const Command> kCommands = Table::kRows;

constexpr bool StandInOrder() {
  for (std::size_t i = 0; i < kCommands.size(); ++i) {
    if (kCommands[i].id != static_cast<CommandId>(i)) return false;
  }
  return kCommands.back().id == kAbout;
}
static_assert(StandInOrder(), "a row stands where its CommandId does");
static_assert(std::all_of(kCommands.begin(), kCommands.end(), [](const Command& row) { return row.run != nullptr; }));

}  // namespace

std::span<const Command> Commands() { return kCommands; }

const Command& RowOf(CommandId id) { return kCommands[static_cast<std::size_t>(id)]; }

std::optional<CommandId> CommandNumbered(int number) {
  const auto row = std::find_if(kCommands.begin(), kCommands.end(), [number](const Command& command) {
    return number != 0 && std::find(command.numbers.begin(), command.numbers.end(), number) != command.numbers.end();
  });
  if (row == kCommands.end()) return {};
  return row->id;
}

QString LabelOf(const Command& command) {
  if (command.place.menu == kMergeTag) return Translated(command.text);
  return Table::tr(command.text.data());
}

QString NameOf(const Command& command) { return LabelOf(command).remove('&').remove("…"); }

}  // namespace quillcast::desktop
