// The texts that the user reads for the result of a send.
#pragma once

#include <cstdint>
#include <string>

namespace quillcast::smtp {

// The text of the result table, or "Error N: Unknown Error." for a code that has no row.
std::string ResultText(std::int32_t code);

// The same from the copy that the account test uses: it has no row for code 6. Deliberate.
std::string TestResultText(std::int32_t code);

// "There was an error sending your message.", a line end, and the text of the code.
std::string WriteSendStatus(std::int32_t code);

// The texts for a body that could not be loaded; empty for a code that writes no line.
std::string BodyImportText(std::int32_t code);

// The codes of loading the body, as they arise here.
inline constexpr std::int32_t kBodyNotOpened = 1;    // a picture's file is missing, or may not be opened
inline constexpr std::int32_t kBodyNotRead = 2;      // it was found and cannot be read: a folder, a failing disk
inline constexpr std::int32_t kBodyNoFile = 3;       // the reference names no file: a device, a pipe, too long a path
inline constexpr std::int32_t kBodyNotParsed = 101;  // the file's content is no picture

inline constexpr const char* kSentText = "Message sent successfully.";
inline constexpr const char* kSubjectNotEncoded = "Error encoding subject.";
inline constexpr const char* kAccountWorks = "Your SMTP settings appear to be functioning correctly.";

}  // namespace quillcast::smtp
