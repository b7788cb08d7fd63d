#include "charset/charset_shifted.h"

#include <algorithm>
#include <array>

#include "platform/utf8.h"

namespace quillcast::charset {

struct ShiftSequences {
  CharsetForm form;
  std::string_view to_ascii;
  std::string_view to_double;
  std::string_view to_roman;  // JIS X 0201: ASCII but for yen and overline
  std::string_view special;   // ASCII characters that do not stand for themselves
};

namespace {

constexpr std::string_view kControls = "\x0E\x0F\x1B";  // in a text they would shift by themselves

constexpr auto kSequences = std::to_array<ShiftSequences>({
    {CharsetForm::kIso2022Jp, "\x1B(B", "\x1B$B", "\x1B(J", kControls},
    {CharsetForm::kIso2022Kr, "\x0F", "\x0E", {}, kControls},
    {CharsetForm::kHz, "~}", "~{", {}, "~"},
});

const ShiftSequences& SequencesOf(CharsetForm form) {
  return *std::ranges::find(kSequences, form, &ShiftSequences::form);
}

constexpr char32_t kYen = 0xA5;
constexpr char32_t kOverline = 0x203E;

// Sequences that are read beyond those that are written.
struct Silent {
  CharsetForm form;
  std::string_view sequence;
  std::string_view text;
};
constexpr auto kSilent = std::to_array<Silent>({
    {CharsetForm::kIso2022Kr, "\x1B$)C", ""},
    {CharsetForm::kHz, "~~", "~"},
    {CharsetForm::kHz, "~\n", ""},
});

class ShiftedReader {
 public:
  explicit ShiftedReader(const CharsetRow& row) : row_(row), sequences_(SequencesOf(row.form)) {}

  std::string Read(std::string_view bytes) {
    std::string out;
    while (!bytes.empty()) {
      if (const std::size_t taken = TakeSequence(bytes, out); taken != 0) {
        bytes.remove_prefix(taken);
      } else {
        bytes.remove_prefix(TakeCharacter(bytes, out));
      }
    }
    return out;
  }

 private:
  enum class State : std::uint8_t { kAscii, kRoman, kDouble };

  bool Shifts(std::string_view bytes, std::string_view sequence, State state) {
    if (sequence.empty() || !bytes.starts_with(sequence)) return false;
    state_ = state;
    return true;
  }

  std::size_t TakeSequence(std::string_view bytes, std::string& out) {
    if (Shifts(bytes, sequences_.to_ascii, State::kAscii)) return sequences_.to_ascii.size();
    if (Shifts(bytes, sequences_.to_double, State::kDouble)) return sequences_.to_double.size();
    if (Shifts(bytes, sequences_.to_roman, State::kRoman)) return sequences_.to_roman.size();
    for (const Silent& silent : kSilent) {
      if (silent.form != row_.form || !bytes.starts_with(silent.sequence)) continue;
      out += silent.text;
      return silent.sequence.size();
    }
    return 0;
  }

  std::size_t TakeCharacter(std::string_view bytes, std::string& out) {
    const auto first = static_cast<std::uint8_t>(bytes[0]);
    if (first == '\n') state_ = State::kAscii;
    if (state_ != State::kDouble || first <= 0x20) {
      char32_t code = first < 0x80 ? first : platform::kReplacement;
      if (state_ == State::kRoman && first == '\\') code = kYen;
      if (state_ == State::kRoman && first == '~') code = kOverline;
      platform::AppendUtf8(out, code);
      return 1;
    }
    const auto second = static_cast<std::uint8_t>(bytes.size() > 1 ? bytes[1] : 0);
    const bool pair = first < 0x80 && second > 0x20 && second < 0x80;
    platform::AppendUtf8(out,
                         pair ? CharactersOf(row_).CharacterOf(0x8080U | first << 8 | second) : platform::kReplacement);
    return pair ? 2 : 1;
  }

  const CharsetRow& row_;
  const ShiftSequences& sequences_;
  State state_ = State::kAscii;
};

}  // namespace

ShiftedWriter::ShiftedWriter(std::string& out, const CharsetRow& row)
    : out_(out), characters_(CharactersOf(row)), sequences_(SequencesOf(row.form)) {}

std::size_t ShiftedWriter::DirectRun(std::string_view utf8) const {
  constexpr std::size_t kFarEnough = 128;  // what lies behind a special character would be looked at for each of them
  std::string_view ascii = utf8.substr(0, platform::AsciiRun(utf8.substr(0, kFarEnough)));
  for (const char special : sequences_.special) ascii = ascii.substr(0, ascii.find(special));
  return ascii.size();
}

void ShiftedWriter::PutDirect(std::string_view ascii) {
  ShiftTo(State::kAscii);
  out_ += ascii;
}

bool ShiftedWriter::Put(char32_t code) {
  if (code == '~' && sequences_.form == CharsetForm::kHz) {
    PutDirect("~~");
    return true;
  }
  if ((code == kYen || code == kOverline) && !sequences_.to_roman.empty()) {
    ShiftTo(State::kRoman);
    out_ += code == kYen ? '\\' : '~';
    return true;
  }
  const std::uint32_t bytes = characters_.BytesOf(code);
  if (bytes == 0) return false;
  ShiftTo(State::kDouble);
  out_ += {static_cast<char>(bytes >> 8 & 0x7F), static_cast<char>(bytes & 0x7F)};
  return true;
}

void ShiftedWriter::Finish() { ShiftTo(State::kAscii); }

void ShiftedWriter::ShiftTo(State state) {
  if (state == state_) return;
  state_ = state;
  if (state == State::kAscii) out_ += sequences_.to_ascii;
  if (state == State::kRoman) out_ += sequences_.to_roman;
  if (state == State::kDouble) out_ += sequences_.to_double;
}

std::string DecodeShifted(std::string_view bytes, const CharsetRow& row) { return ShiftedReader(row).Read(bytes); }

}  // namespace quillcast::charset
