// What the tutorial does in the main window for whoever asks.
#pragma once

#include <QString>

#include "help/tutorial.h"
#include "platform/result.h"

namespace quillcast::desktop {

struct Shell;

// Does the step. Fails where something stands in the way; what the person has stopped by themselves is no failure.
Result<void> DoStep(Shell& shell, help::TutorialStep step);

// What the window shows of the step by now, whoever did it; empty where it is yet to be done.
QString DoneText(Shell& shell, help::TutorialStep step);

}  // namespace quillcast::desktop
