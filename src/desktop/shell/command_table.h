// The commands of the main window: what each is called, where it stands, and what it does.
#pragma once

#include <QString>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "desktop/document/editor_state.h"

namespace quillcast::desktop {

struct Shell;

// In the order of the menus.
enum class CommandId {
  kNew,
  kOpen,
  kSave,
  kSaveAs,
  kPrint,
  kProperties,
  kExit,
  kUndo,
  kRedo,
  kCut,
  kCopy,
  kPaste,
  kPastePlain,
  kDelete,
  kSelectAll,
  kFind,
  kSource,
  kZoomIn,
  kZoomOut,
  kZoomReset,
  kDateTime,
  kTemplate,
  kAddAttachment,
  kDeleteAttachment,
  kMergeEmail,
  kMergeTitle,
  kMergeFirstName,
  kMergeLastName,
  kMergeCountry,
  kMergeState,
  kMergeCity,
  kMergeAddress1,
  kMergeAddress2,
  kMergeZipCode,
  kMergePhone,
  kMergeFax,
  kMergeCompany,
  kMergeJobTitle,
  kMergeWebSite,
  kMergeAdditional1,
  kMergeAdditional2,
  kMergeAdditional3,
  kPicture,
  kHyperlink,
  kLine,
  kTable,
  kFont,
  kTextColour,
  kBody,
  kNormal,
  kHeading1,
  kHeading2,
  kHeading3,
  kQuote,
  kPreformatted,
  kBold,
  kItalic,
  kUnderline,
  kAlignLeft,
  kCentre,
  kAlignRight,
  kIndent,
  kOutdent,
  kBullets,
  kNumbers,
  kRemoveHyperlink,
  kRemoveFormatting,
  kRowAbove,
  kRowBelow,
  kColumnLeft,
  kColumnRight,
  kDeleteRow,
  kDeleteColumn,
  kDeleteTable,
  kMailPreview,
  kPreview,
  kSend,
  kHistory,
  kAccount,
  kGroups,
  kSignature,
  kImport,
  kExport,
  kThreads,
  kSplash,
  kDomainTools,
  kExtraForm1,
  kExtraForm2,
  kExtraForm3,
  kExtraForm4,
  kExtraForm5,
  kHelpTopics,
  kTutorial,
  kTips,
  kSupport,
  kUpdate,
  kHomePage,
  kAbout,
};

enum class Menu {
  kFile,
  kEdit,
  kZoom,
  kInsert,
  kMergeTag,
  kFormat,
  kParagraphStyle,
  kRowsAndColumns,
  kMessage,
  kTools,
  kHelp
};

// Where a command stands: behind the row above it, and where it begins something else, under a line.
struct Place {
  constexpr Place(Menu in) : menu(in) {}  // NOLINT(google-explicit-constructor): most stand under no line
  Menu menu;
  bool under_line = false;
};

struct Command {
  CommandId id;
  std::array<int, 2> numbers;  // its identifiers in the menu and in the toolbar, 0 for none
  std::string_view name;       // of its button, wherever that stands; empty where none is known
  Place place;
  std::string_view text;
  std::string_view icon = {};
  std::string_view keys = {};
  void (*run)(Shell&) = nullptr;
  int editor_code = 0;                   // by which editing components know it
  bool EditorState::*checked = nullptr;  // what its check mark shows
};

// One row for each CommandId, in that order.
std::span<const Command> Commands();
const Command& RowOf(CommandId id);
// Nothing for a number that does nothing: 3, and every unknown one.
std::optional<CommandId> CommandNumbered(int number);

// What the menus call it, in the user's language and with its letter.
QString LabelOf(const Command& command);
// The same without its letter and without the dots of what opens a window.
QString NameOf(const Command& command);

}  // namespace quillcast::desktop
