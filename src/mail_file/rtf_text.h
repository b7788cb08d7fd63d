// The words of rich text, or the page that it was made of: mail programs keep the HTML of a message within its rich
// text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quillcast::mail_file {

// Decodes to UTF-8 piece by piece, from any cut on; a decoder is for one text. Pictures, styles and all else that is no
// word is left out. Linear in time; what it holds does not grow with the text.
class RtfTextDecoder {
 public:
  RtfTextDecoder();
  void Decode(std::string_view rtf, std::string& out);
  // What was held back.
  void Finish(std::string& out) { EndBytes(out); }

  // Whether it told so far that it was made of HTML; then that is what comes out.
  bool is_of_html() const { return is_of_html_; }

 private:
  enum class State : std::uint8_t { kText, kControl, kWord, kNumber, kHex, kBinary };
  struct Group {
    bool is_left_out = false;
    bool is_for_rtf_alone = false;  // the HTML says it in its own way
    bool is_font_table = false;
    std::int64_t bytes_behind_unicode = 1;  // what a reader that knows no Unicode shows in its place
    const char* charset = nullptr;          // none: that of the whole text
  };

  void Take(char c, std::string& out);
  void TakeText(char c, std::string& out);
  void TakeControl(char c, std::string& out);
  void TakeHex(char c, std::string& out);
  void EndWord(std::string& out);
  bool SetByWord(std::int64_t number, std::string& out);
  void BeginGroup();
  void EndGroup();
  bool is_shown() const { return !group().is_left_out && !group().is_for_rtf_alone; }
  Group& group() { return groups_.back(); }
  const Group& group() const { return groups_.back(); }
  void TakeByte(char c, std::string& out);
  void EndBytes(std::string& out);
  void Show(std::string_view text, std::string& out);
  void TakeUnicode(std::int64_t number, std::string& out);
  void ChooseFont(std::int64_t number);

  State state_ = State::kText;
  std::string word_;
  std::string number_;
  std::string hex_;
  bool is_ignorable_ = false;  // the destination that the next word names
  bool is_of_html_ = false;
  std::vector<Group> groups_;
  std::size_t too_deep_ = 0;  // groups that are open beyond those
  std::string whole_charset_ = "cp1252";
  std::unordered_map<std::int64_t, const char*> fonts_;
  std::int64_t font_ = 0;        // of the font table
  std::int64_t skipped_ = 0;     // bytes that stand for a character that came
  std::int64_t binary_ = 0;      // bytes
  std::uint32_t high_half_ = 0;  // of a character beyond 16 bits
  std::string bytes_;            // in the group's character set
};

}  // namespace quillcast::mail_file
