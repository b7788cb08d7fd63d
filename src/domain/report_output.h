// Save and Print of a report box: what is asked, and what goes into the file and onto the paper.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/file_attributes.h"
#include "platform/prompts.h"
#include "platform/result.h"
#include "platform/sentence.h"

namespace quillcast::domain {

// Asks for the file, about one that is locked, and writes the text there in the set that `code_page` names, its lines
// ended by CRLF and one line end more behind it. Gives what is to be told of it: nothing where there was nothing to
// save, which the person was warned of, or no file was chosen. After a failure what stood there stands there still.
Result<std::optional<Sentence>> SaveReport(std::string_view text, std::string_view code_page,
                                           const platform::OwnFiles& own, platform::Prompts& prompts);

// The text as a box shows it: its lines ended by LF, none longer than 2,000 characters, since the layout of one takes
// time by the square of its length, and what Printable takes out, tabs apart, as "?".
std::string ShownReport(std::string_view text);

// Whether the text is to be printed: the person is asked, or warned where there is none.
bool MayPrintReport(std::string_view text, platform::Prompts& prompts);

// The three lines that are printed: the program with its version, a rule, and the whole text with its own line breaks.
std::string PrintedReport(std::string_view text);

}  // namespace quillcast::domain
