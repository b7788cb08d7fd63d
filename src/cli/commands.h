// The commands, one file each. Each is added to the command line with its options and its action.
#pragma once

#include "cli/context.h"

namespace quillcast::cli {

// `context` must outlive `app`, whose actions refer to it (OnRun).
void AddGroupCommand(CLI::App& app, Context& context);
void AddRecipientCommand(CLI::App& app, Context& context);
void AddFindCommand(CLI::App& app, Context& context);
void AddImportCommand(CLI::App& app, Context& context);
void AddExportCommand(CLI::App& app, Context& context);
void AddAccountCommand(CLI::App& app, Context& context);
void AddComposeCommand(CLI::App& app, Context& context);
void AddTemplateCommand(CLI::App& app, Context& context);
void AddSignatureCommand(CLI::App& app, Context& context);
void AddPreviewCommand(CLI::App& app, Context& context);
void AddPropertiesCommand(CLI::App& app, Context& context);
void AddSendCommand(CLI::App& app, Context& context);
void AddRunsCommand(CLI::App& app, Context& context);
void AddHistoryCommand(CLI::App& app, Context& context);
void AddMessageCommand(CLI::App& app, Context& context);
void AddServerCommand(CLI::App& app, Context& context);
void AddDomainCommand(CLI::App& app, Context& context);
void AddSupportCommand(CLI::App& app, Context& context);
void AddMailboxCommand(CLI::App& app, Context& context);
void AddDemoCommand(CLI::App& app, Context& context);
void AddUpdateCommand(CLI::App& app, Context& context);
void AddAboutCommand(CLI::App& app, Context& context);
void AddHelpCommand(CLI::App& app, Context& context);

}  // namespace quillcast::cli
