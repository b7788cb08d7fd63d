// A press that was refused, with words that have to be read before the next.
#pragma once

class QPushButton;

namespace quillcast::desktop {

// Switches the button off for longer than a double click takes, whose second click would go ahead unread; then it has
// the keyboard again.
void HoldUntilRead(QPushButton* button);

}  // namespace quillcast::desktop
