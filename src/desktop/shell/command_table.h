// The numeric commands of the main window's command bar: what each of them does.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace quillcast::desktop {

enum class Action {
  kOpen,
  kSave,
  kPrint,
  kProperties,
  kExit,
  kEdit,  // hands `editor_code` to the editor
  kDateTime,
  kTemplate,
  kAddAttachment,
  kDeleteAttachment,
  kFont,
  kBody,
  kLine,
  kTable,
  kPicture,
  kHyperlink,
  kPreview,
  kSend,
  kAccount,
  kGroups,
  kHistory,
  kSignature,
  kImport,
  kExport,
  kThreads,
  kDomainTools,
  kExtraForm1,
  kExtraForm2,
  kExtraForm3,
  kExtraForm4,
  kExtraForm5,
  kHelp,
  kTutorial,
  kTips,
  kSupport,
  kUpdate,
  kHomePage,
  kAbout,
  kMergeField,  // inserts the tag of the merge field whose control is `merge_field`
};

struct Command {
  int identifier = 0;
  Action action = Action::kOpen;
  int editor_code = 0;
  std::string_view merge_field = {};
};

// By rising identifier. A menu entry and a toolbar button that do the same have two identifiers.
std::span<const Command> Commands();

// Nothing for an identifier that does nothing: 3, and every unknown one.
std::optional<Command> FindCommand(int identifier);

}  // namespace quillcast::desktop
