// The texts that the user reads for the result of a send.
#pragma once

#include <cstdint>
#include <string>

namespace quillcast::sending {

// The text of the result table, or "Error N: Unknown Error." for a code that has no row.
std::string ResultText(std::int32_t code);

// The same from the copy that the account test uses: it has no row for code 6. Deliberate.
std::string TestResultText(std::int32_t code);

// "There was an error sending your message.", a line end, and the text of the code.
std::string WriteSendStatus(std::int32_t code);

// The texts for a body that could not be loaded; empty for a code that writes no line.
std::string BodyImportText(std::int32_t code);

// The codes of loading the body, as they arise here.
inline constexpr std::int32_t kBodyNotOpened = 1;  // the body file is missing or may not be read
inline constexpr std::int32_t kBodyNotRead = 2;    // reading it failed, or a picture it refers to cannot be read

inline constexpr const char* kSentText = "Message sent successfully.";
inline constexpr const char* kSubjectNotEncoded = "Error encoding subject.";
inline constexpr const char* kAccountWorks = "Your SMTP settings appear to be functioning correctly.";

}  // namespace quillcast::sending
