// quillcast group undo: takes the last change of several recipients back.
#include <fmt/format.h>

#include <memory>

#include "cli/group_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/edit/undo.h"

namespace quillcast::cli {
namespace {

using recipients::EditStep;
using recipients::RecipientStore;

struct UndoOptions {
  bool show = false;
  bool forget = false;
};

// `merge "Guests" to "Readers", 7 recipients`; an order that was set is nothing that recipients are counted by.
std::string Told(const EditStep& step) {
  const std::string_view word = step.kind == recipients::EditKind::kDeleteGroup ? "delete" : EditWord(step.kind);
  const std::string other = step.other_group.empty() ? "" : fmt::format(" to \"{}\"", step.other_group);
  std::string told = fmt::format("{} \"{}\"{}", word, step.group, other);
  if (step.kind == recipients::EditKind::kSort) return told;
  return fmt::format("{}, {}", told, platform::Counted(step.rows, "recipient", "recipients"));
}

nlohmann::ordered_json AsObject(const EditStep& step, const char* done) {
  nlohmann::ordered_json object = {{"done", done}, {"change", EditWord(step.kind)}, {"group", step.group}};
  if (!step.other_group.empty()) object["to"] = step.other_group;
  if (step.kind != recipients::EditKind::kSort) object["recipients"] = step.rows;
  return object;
}

Result<int> Show(Context& context, const RecipientStore& store) {
  const auto step = recipients::FindUndo(store);
  if (!step) return step.error();
  if (!*step) {
    context.output.Note("There is nothing to take back.");
    context.output.Object({{"done", "show"}, {"change", nullptr}});
    return 0;
  }
  context.output.Line(Told(**step));
  context.output.Object(AsObject(**step, "show"));
  return 0;
}

Result<int> Forget(Context& context, const RecipientStore& store) {
  if (const auto done = recipients::ForgetUndo(store); !done) return done.error();
  context.output.Line("What was deleted is not kept any more.");
  context.output.Object({{"done", "forget"}});
  return 0;
}

Result<int> TakeBack(Context& context, const RecipientStore& store) {
  const auto undone = recipients::Undo(store, ShowProgress(context));
  if (!undone) return undone.error();
  context.output.EndProgress();
  context.output.Line("Taken back: " + Told(undone->step));
  auto object = AsObject(undone->step, "undo");
  object["left"] = undone->left;
  context.output.Object(object);
  if (undone->left > 0) {
    context.output.Note(fmt::format("{} as they are: changed since, or their address is in the group again.",
                                    platform::Counted(undone->left, "was left", "were left")));
  }
  return 0;
}

}  // namespace

void AddGroupUndo(CLI::App& group, Context& context) {
  const auto options = std::make_shared<UndoOptions>();
  CLI::App& undo =
      *group.add_subcommand("undo", "Take back the last change of several recipients or of a whole group, once");
  CLI::Option* show = undo.add_flag("--show", options->show, "Show what would be taken back; change nothing");
  undo.add_flag("--forget", options->forget, "Keep nothing of those who were deleted")->excludes(show);
  undo.footer(
      "capitalise, sort, merge, duplicates --delete and delete of a group, and move, copy and delete of recipients can "
      "be\n"
      "taken back. What was changed since stays as it is.\n"
      "Example: quillcast group undo --show");
  OnRun(undo, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) {
      if (options->show) return Show(ctx, store);
      return options->forget ? Forget(ctx, store) : TakeBack(ctx, store);
    });
  });
}

}  // namespace quillcast::cli
