// Header fields as they go over the wire: folded, encoded where needed, and closed to line breaks from outside.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "charset/charset.h"

namespace quillcast::mime {

// The value of a header field. It cannot hold a line break: control characters become blanks, what is not UTF-8 becomes
// U+FFFD, and blanks at the ends are dropped.
class HeaderText {
 public:
  explicit HeaderText(std::string_view utf8);

  // UTF-8, not yet encoded or folded.
  std::string_view text() const { return text_; }

 private:
  std::string text_;
};

// The encoding of RFC 2047 words. kNone leaves the choice: the shorter one, for each run of words that needs it.
enum class HeaderEncoding { kNone, kQ, kB };

// What stands before the colon: printable ASCII without blank and colon (RFC 5322 2.2). Names stand in this program and
// are checked when they are compiled.
class FieldName {
 public:
  consteval FieldName(const char* name) : text_(name) {  // NOLINT(google-explicit-constructor)
    if (text_.empty()) throw "a header field has a name";
    for (const char c : text_) {
      if (c <= 0x20 || c == ':' || c == 0x7F) throw "a name of a header field is printable ASCII without a colon";
    }
  }
  std::string_view text() const { return text_; }

 private:
  std::string_view text_;
};

// True when the charset holds every character, so that the caller can turn to UTF-8 when it does not.
bool CanEncode(const charset::Charset& charset, std::string_view utf8);

// "Subject: value" and CRLF, folded at 76 columns where there is a blank to fold at. Words that need it, and words that
// read like encoded words, are encoded; what the charset lacks becomes "?".
void AppendUnstructured(std::string& out, FieldName name, const HeaderText& value, const charset::Charset& charset,
                        HeaderEncoding encoding);

// "From: Name <address>" and CRLF; the address alone when there is no name. The address is checked elsewhere; here it
// only loses what would begin another mailbox or end this one.
void AppendMailbox(std::string& out, FieldName name, const HeaderText& display_name, const HeaderText& address,
                   const charset::Charset& charset, HeaderEncoding encoding);

// Without path separators and control characters; "attachment" when nothing is left.
std::string SafeFileName(std::string_view utf8);
// The same in ASCII, for readers that know no better: "_" for each foreign character, and at most 50 in all; an
// extension of up to ten, its dot included, is kept.
std::string AsciiFileName(std::string_view utf8);

// Goes on with a Content-Disposition: `;` CRLF ` filename="..."`, or the RFC 2231 form for names that ASCII cannot hold
// or that read like encoded words. No stand-in is beside that: many readers would show it in place of the name, and
// those that do not know the form take the name of AppendNameParameter. No CRLF at the end. The value passes
// SafeFileName.
void AppendParameter(std::string& out, std::string_view attribute, std::string_view file_name);

// Goes on with a Content-Type: `;` CRLF ` name="..."`, with encoded words between the quotes where ASCII is not enough:
// against RFC 2047 section 5, and what most mail readers look for.
void AppendNameParameter(std::string& out, std::string_view file_name);

// RFC 5322 3.3: "Fri, 21 Nov 1997 09:55:06 -0600".
std::string FormatDate(const std::tm& local, long utc_offset_seconds);

// What may stand behind the "@" of a Message-ID or a Content-ID: characters that a domain cannot have are dropped;
// "localhost" when none stay.
std::string IdDomain(std::string_view domain);

// "<...@domain>" from 128 bits of chance. The domain passes IdDomain.
std::string MakeMessageId(std::uint64_t first, std::uint64_t second, std::string_view domain);

// 26 characters that begin with "=_", which neither quoted-printable nor base64 can contain.
std::string MakeBoundary(std::uint64_t first, std::uint64_t second);

}  // namespace quillcast::mime
