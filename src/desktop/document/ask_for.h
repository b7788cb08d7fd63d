// What is asked for before it goes into an editor, for every window that has one.
#pragma once

#include <filesystem>

#include "platform/prompts.h"

class QWidget;

namespace quillcast::desktop {

class HtmlEditor;

// Each gives the keys back to the editor. With a picture, link or text selected, or the caret in a link, that is
// changed.
//
// `folder` is where copies of pictures go. `file` is asked about as if it had been picked; it may be empty.
void AskForPicture(HtmlEditor& editor, platform::Prompts& prompts, const std::filesystem::path& folder,
                   const std::filesystem::path& file, QWidget* window);
void AskForLink(HtmlEditor& editor, QWidget* window);
void AskForFont(HtmlEditor& editor, QWidget* window);

}  // namespace quillcast::desktop
