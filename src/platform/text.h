// Small operations on text that several folders need. Text is UTF-8; what is said to be ASCII looks at single bytes.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::platform {

// Of A to Z and a to z alone, whatever the locale: all other bytes, those of UTF-8 above 127 included, stand for
// themselves.
char AsciiLower(char c);
char AsciiUpper(char c);
bool AsciiIsAlnum(char c);
std::string AsciiLower(std::string_view text);
std::string AsciiUpper(std::string_view text);
bool EqualsIgnoringAsciiCase(std::string_view a, std::string_view b);
bool StartsWithIgnoringAsciiCase(std::string_view text, std::string_view prefix);

// Without blanks, tabs and line ends at either end.
std::string_view Trim(std::string_view text);

// The pieces between separators; always at least one, empty pieces included.
std::vector<std::string_view> Split(std::string_view text, char separator);
template <std::same_as<std::string> Temporary>
std::vector<std::string_view> Split(Temporary&& text, char separator) = delete;  // the pieces would outlive it

// Every occurrence of `from` replaced, left to right, the replacement not looked at again. `from` is not empty.
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);

// Each line end, CRLF, LF or CR, as CRLF.
std::string WithLineEnds(std::string_view text);

// With what "%41" and the like stand for, as addresses write it; a "%" that begins no such thing stands for itself.
// Nothing where a byte would be 0.
std::optional<std::string> PercentDecoded(std::string_view text);

// The same backwards: each byte but letters, digits and "-._/" as "%41", so that nothing in it can end an address.
std::string PercentEncoded(std::string_view text);

// The ASCII digits of a text, one after the other.
std::string DigitsOf(std::string_view text);

// The decimal value of a text made of ASCII digits alone, with blanks allowed around it; nothing when it is anything
// else or does not fit.
std::optional<std::int64_t> ParseWholeNumber(std::string_view text);

// The same without blanks around it, when it lies within the bounds: what a person typed where only digits may stand.
std::optional<std::int64_t> WholeNumberBetween(std::string_view text, std::int64_t low, std::int64_t high);

// Whether it is a number as a person types it, ASCII digits with an optional fraction ("2.5"), within the bounds.
bool IsNumberBetween(std::string_view text, std::int64_t low, std::int64_t high);

// "1,234,567".
std::string WithThousands(std::int64_t number);

// "1.5 MiB", "12 KiB", "17 bytes".
std::string HumanSize(std::uint64_t bytes);

// "1 message", "2 messages".
std::string Counted(std::int64_t count, std::string_view singular, std::string_view plural);

// One line that is safe to show or log: control characters (C0, DEL and C1), line and paragraph separators, characters
// that override or isolate the direction of what follows, and broken UTF-8 become "?", and what is longer than
// `longest` bytes is cut with "...". What comes from a server or a file passes through here before a person sees it.
std::string Printable(std::string_view text, std::size_t longest = 1000);

// JSON text, as a writer made it, in which those same characters stand as "\uXXXX", so that it is safe to show and
// loses nothing. They can stand in its strings alone.
std::string PrintableJson(std::string_view json);

}  // namespace quillcast::platform
