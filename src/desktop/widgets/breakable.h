// Texts of others in lines that wrap.
#pragma once

#include <QString>

namespace quillcast::desktop {

// With places at which a word longer than this may be broken: one that cannot be would widen its window.
QString Breakable(const QString& text, int longest_word);

}  // namespace quillcast::desktop
