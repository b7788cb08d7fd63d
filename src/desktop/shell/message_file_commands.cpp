// The commands for message files.
#include "desktop/mail_file/message_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"

namespace quillcast::desktop {

void ShowMessageFile(Shell& shell, const std::filesystem::path& file) {
  MessageForm(shell.program.settings, file, {}, &shell.window).exec();
}

}  // namespace quillcast::desktop
