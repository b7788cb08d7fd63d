#include "html/local_name.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "html/address_reach.h"
#include "html/characters.h"
#include "html/file_scanner.h"
#include "html/html_css.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

using Text = FileScanner::Text;

char At(std::string_view text, std::size_t at) { return at < text.size() ? text[at] : '\0'; }

// The same with an ASCII blank for each other one, such as "&nbsp;" stands for.
std::string WithPlainBlanks(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t plain = platform::AsciiRun(text);
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const auto [code, length] = platform::DecodeUtf8(text);
    const bool is_blank = code != platform::kNotUtf8 && u_isUWhiteSpace(static_cast<UChar32>(code)) != 0;
    out += is_blank ? std::string_view(" ") : text.substr(0, length);
    text.remove_prefix(length);
  }
  return out;
}

std::string Parted(std::string_view text) {
  std::string parted = WithPlainBlanks(text);
  std::replace_if(parted.begin(), parted.end(), IsControl, ' ');
  return parted;
}

bool IsOfFolderName(char c) {
  return platform::AsciiIsAlnum(c) || c == '-' || c == '_' || c == '.' || static_cast<unsigned char>(c) >= 0x80;
}

// "/home/ada" and "x=/home/ada/y" hold "/home/ada"; "/home/adam" and "x/home/ada" do not.
bool HoldsFolder(std::string_view text, std::string_view folder) {
  for (std::size_t at = text.find(folder); at != std::string_view::npos; at = text.find(folder, at + 1)) {
    const bool begins = at == 0 || !IsOfFolderName(text[at - 1]);
    if (begins && !IsOfFolderName(At(text, at + folder.size()))) return true;
  }
  return false;
}

bool HoldsFolder(std::string_view text, Folders known) {
  return std::any_of(known.begin(), known.end(),
                     [&](const std::string& folder) { return HoldsFolder(text, std::string_view(folder)); });
}

// Control characters part words or are none at all. `text` becomes what is left to be decoded.
bool NamesAsWritten(std::string& text, Text kind, Folders known) {
  text = WithPlainBlanks(text);
  FileScanner parted(text, kind);
  if (parted.FindsFile()) return true;
  std::string without = text;
  if (std::erase_if(without, IsControl) > 0 && FileScanner(without, kind).FindsFile()) return true;
  text = parted.TakeRest();
  return HoldsFolder(text, known);
}

// "%66" is the character, and so are "\x66" and "\u0066" of scripts.
std::string BytesDecoded(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view rest = text.substr(at);
    const std::size_t mark = rest.starts_with("\\u00") ? 4
                             : rest.starts_with("\\x") ? 2
                             : rest.starts_with('%')   ? 1
                                                       : 0;
    if (mark == 0 || !IsHexDigit(At(rest, mark)) || !IsHexDigit(At(rest, mark + 1))) {
      out += text[at];
      continue;
    }
    out += platform::PercentDecoded("%" + std::string(rest.substr(mark, 2))).value_or("");
    at += mark + 1;
  }
  return out;
}

std::string WithoutReferences(std::string_view text) { return DecodeCharacterReferences(text, true); }

bool NamesFile(std::string_view text, Text kind, Folders known = {}) {
  constexpr int kRounds = 2;  // a page within an attribute has two
  std::string read(text);
  if (NamesAsWritten(read, kind, known)) return true;
  for (int round = 0; round < kRounds; ++round) {
    for (const auto& decode : {WithoutReferences, BytesDecoded, UnescapedCss}) {
      if (read.find_first_of("&%\\") == std::string::npos) return false;
      std::string decoded = decode(read);
      if (decoded == read) continue;
      read = std::move(decoded);
      if (NamesAsWritten(read, kind, known)) return true;
    }
  }
  return false;
}

bool HoldsLetter(std::string_view word) {
  while (!word.empty()) {
    const auto [code, length] = platform::DecodeUtf8(word);
    if (code == platform::kNotUtf8 || u_isalnum(static_cast<UChar32>(code)) != 0) return true;
    word.remove_prefix(length);
  }
  return false;
}

// "/home/ada/x", "(~/x": so the folders of persons begin on their own computers. "/home/x" may be anything.
bool BeginsWithHome(std::string_view text) {
  struct Row {
    std::string_view begin;
    bool has_person;
  };
  constexpr std::size_t kLongestPerson = 40;
  constexpr auto kHomes =
      std::to_array<Row>({{"/home/", true}, {"/Users/", true}, {"/var/home/", true}, {"/root/", false}, {"~/", false}});
  text.remove_prefix(std::min(text.find_first_not_of("\"'([<=!-"), text.size()));
  return std::any_of(kHomes.begin(), kHomes.end(), [&](const Row& row) {
    if (!text.starts_with(row.begin)) return false;
    const std::string_view rest = text.substr(row.begin.size(), kLongestPerson);
    const std::size_t end = row.has_person ? rest.find('/') : std::min(rest.find(' '), rest.size());
    return end != std::string_view::npos && end > 0 && rest[end - 1] != ' ' && HoldsLetter(rest.substr(0, end));
  });
}

// `word` is a part of the text.
std::string_view FromWord(std::string_view text, std::string_view word) {
  return text.substr(static_cast<std::size_t>(word.data() - text.data()));
}

// "C:\Temp can be emptied": a sentence that begins with what every such computer has. "C:\Ada Love\x", and
// "C:\Ada Love.png", are paths with blanks.
bool SpeaksOfFolder(std::string_view text) {
  constexpr std::size_t kDrive = 3;
  if (!platform::AsciiIsAlnum(At(text, 0)) || text.substr(1, 2) != ":\\") return false;
  const std::string_view rest = platform::Trim(text.substr(kDrive));
  const std::string_view last = rest.substr(rest.rfind(' ') + 1);
  if (last.size() == rest.size() || rest.find_first_of("/\\") != std::string_view::npos) return false;
  const std::string_view extension = last.substr(std::min(last.rfind('.'), last.size()));
  return extension.size() < 2 || !std::all_of(extension.begin() + 1, extension.end(), platform::AsciiIsAlnum);
}

// What is run or shown itself, and has no query.
bool HoldsItself(std::string_view scheme) {
  constexpr auto kSchemes = std::to_array<std::string_view>({"javascript", "vbscript", "data"});
  return std::any_of(kSchemes.begin(), kSchemes.end(),
                     [&](std::string_view one) { return platform::EqualsIgnoringAsciiCase(one, scheme); });
}

}  // namespace

bool NamesLocalFile(std::string_view text, Folders known) { return NamesFile(text, Text::kOfPrograms, known); }

bool AddressNamesLocalFile(std::string_view address) {
  std::string read(address);
  std::erase_if(read, IsControl);
  const std::string_view whole = platform::Trim(read);
  const AddressReach reach = ReachOf(whole);
  if (reach != AddressReach::kNeither) return reach == AddressReach::kFile;
  return NamesLocalFile(HoldsItself(SchemeOfAddress(whole)) ? whole : whole.substr(0, whole.find_first_of("?#")));
}

bool AddressesNameLocalFile(std::string_view addresses) {
  const std::string text = Parted(addresses);
  const auto parts = platform::Split(text, ' ');
  return std::any_of(parts.begin(), parts.end(), AddressNamesLocalFile);
}

bool HoldsHomeFolder(std::string_view note) {
  const std::string text = Parted(note);
  for (std::size_t at = text.find_first_of("/~"); at != std::string::npos; at = text.find_first_of("/~", at + 1)) {
    const char before = at == 0 ? ' ' : text[at - 1];
    const bool begins = before == '-' || (!IsOfFolderName(before) && before != '/');
    if (begins && BeginsWithHome(std::string_view(text).substr(at))) return true;
  }
  return false;
}

bool WordsNameLocalFile(std::string_view words) {
  const std::string text = Parted(words);
  bool is_begin = true;
  for (const std::string_view word : platform::Split(text, ' ')) {
    if (word.empty()) continue;
    const std::string_view from_here = FromWord(text, word);
    if (is_begin && BeginsWithHome(from_here)) return true;
    if (is_begin && NamesFile(word, Text::kOfPeople)) return !SpeaksOfFolder(from_here);
    is_begin = word.ends_with(':') || word.ends_with("\uFF1A") || (is_begin && !HoldsLetter(word));
  }
  return false;
}

}  // namespace quillcast::html
