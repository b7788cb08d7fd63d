// How large the letters of a page are, and how far in its lines begin.
#pragma once

class QTextDocument;

namespace quillcast::desktop {

// The toolkit takes a heading for so many steps from its usual size, whatever size it is given: that counts.
void PreferSizesToSteps(QTextDocument& document);

// Letters and distances in dots are laid out in dots of the device, of which paper has `dots` an inch, where the page
// counts those of a screen. They come to be as large as there.
void KeepScreenSizes(double dots, QTextDocument& document);

// Per inch: what a page counts its widths in.
inline constexpr double kScreenDots = 96;

}  // namespace quillcast::desktop
