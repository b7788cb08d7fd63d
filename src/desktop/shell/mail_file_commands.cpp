// The commands of the Tools menu that are about message files.
#include "desktop/document/html_editor.h"
#include "desktop/run/extra_form3.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"

namespace quillcast::desktop {

void ExportMessage(Shell& shell) {
  ExtraForm3(shell.program, shell.Message(), &shell.window).exec();
  shell.editor.setFocus();
}

}  // namespace quillcast::desktop
