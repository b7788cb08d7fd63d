// Signs of Unicode that leave no mark where they stand. What turns the line round is not among them (see Printable).
#pragma once

namespace quillcast::platform {

// Nothing at all is seen of them, or of what they may be looked up as.
bool IsUnseen(char32_t code);
// Blanks of any width, lines too, and what joins letters or chooses their form.
bool IsBlank(char32_t code);

}  // namespace quillcast::platform
