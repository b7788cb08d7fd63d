// Sets running text and block boundaries as lines of plain text: collapsed white space, margins, line prefixes, and
// long lines wrapped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::html {

// Known limits, which bound how much longer than its source a text becomes: twelve levels of prefixes are drawn, 28
// columns of them; two blank lines stand one after the other, or 49 in preformatted text.
class TextLayout {
 public:
  // What parts a block from what stands before it, at the least.
  enum class Margin { kLine, kBlankLine };

  // How long the text may be expected to become at most, where more is no error, and how wide its lines may be. Wider
  // ones are wrapped between words, never within one, and at no-break spaces only where a line would be too long;
  // preformatted ones stay.
  TextLayout(std::size_t expected_size, std::size_t columns) : columns_(columns) { out_.reserve(expected_size); }

  // Text with its white space collapsed. No-break spaces and those of a given width stay, as blanks, except at line
  // starts and ends; white space beside them adds nothing.
  void AddText(std::string_view utf8);
  // Text whose blanks and line ends are kept.
  void AddPreformatted(std::string_view utf8);

  // The line ends here, as at <br>. One that nothing stood in leaves a blank line.
  void Break();
  // The end of a block that holds a no-break space and nothing else, which is how editors write a blank line; of any
  // other block it is nothing.
  void EndFiller();
  // A block begins or ends here.
  void Block(Margin margin);

  // A table cell that goes on in the line of the one before it.
  void CellGap();
  // Until the next text, blocks that begin or end make no line: what a cell or a list item wraps its text in.
  void HoldBlocks() { held_ = true; }
  // Undoes both, for a block that stands on its own wherever it is.
  void ReleaseBlocks() { held_ = false; }
  // Takes back the boundaries since the last text, as between the rows of a table.
  void CloseUp() { breaks_ = block_ = 0; }
  // Text for the end of the last line, which must have been begun, before the boundaries that were announced since.
  void AppendToLine(std::string_view utf8);
  // What stands here, a link or a picture, is no part of a word that follows at once.
  void EndWord() { word_ended_ = true; }
  // Puts a blank line before the line that was begun last, if there is none and no prefix would be drawn in it.
  void SetLineApart();
  // How long the last line is by now, in bytes, and whether it ends with a digit.
  std::size_t line_size() const { return out_.size() - content_begin_; }
  bool ends_with_digit() const;

  // What each line begins with from now on: `first` once, then `rest`. Of deep or wide nesting only the outer levels
  // are drawn.
  void PushPrefix(std::string first, std::string rest);
  void PopPrefix();

  // Grows with everything that is shown.
  std::size_t size() const { return shown_; }
  // Counts up with each line that text begins.
  std::size_t line_number() const { return line_number_; }

  // The text; its last line is ended where there is one.
  std::string Finish() &&;

 private:
  struct Prefix {
    std::string first;
    std::string rest;
    bool used = false;
  };

  bool NothingToJoin() const { return at_line_start() || blanks_ > 0 || collapsible_; }
  void Put(std::string_view visible);
  bool at_line_start() const { return line_number_ == 0 || breaks_ > 0 || block_ > 0; }
  void BeginLine();
  void EndLine();
  void WrapLine();
  void ReleaseNoBreaks();

  std::size_t columns_;
  std::string out_;
  std::size_t shown_ = 0;          // bytes that were put, whatever became of the blanks around them
  std::size_t line_begin_ = 0;     // of the last line
  std::size_t content_begin_ = 0;  // behind its prefixes
  std::string line_rest_;          // the prefixes of a line that goes on from it
  std::size_t gap_ = 0;            // line ends before it
  std::vector<Prefix> prefixes_;   // the outer levels
  std::size_t prefix_width_ = 0;   // of them all
  std::size_t depth_ = 0;          // all levels, drawn or not
  std::size_t blank_depth_ = 0;    // the shallowest level since the last text, whose prefix blank lines get
  std::size_t breaks_ = 0;         // line breaks since the last text
  std::size_t block_ = 0;          // 1: the next text begins a line, 2: after a blank line
  std::size_t blanks_ = 0;         // to be written before the next text of the line, besides what collapses
  std::size_t line_number_ = 0;
  bool no_break_ = false;      // the last of those blanks is one that no line ends at
  bool has_no_break_ = false;  // the last line holds such a one
  bool collapsible_ = false;   // white space stands here, which is one blank when there is no other
  bool literal_ = false;       // the blanks count at the start of a line too
  bool held_ = false;
  bool word_ended_ = false;
  bool is_preformatted_ = false;  // something in the last line is
};

}  // namespace quillcast::html
