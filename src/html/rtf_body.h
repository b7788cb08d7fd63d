// Rich text (RTF 1.9) as it is written from front to back: paragraphs, runs of letters, lists, links, pictures, and
// tables in tables. Knows nothing of HTML.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quillcast::html {

// How letters look. Colours are 0xRRGGBB.
struct RtfLetters {
  bool bold = false;
  bool italic = false;
  bool underlined = false;
  bool struck = false;
  int raised = 0;         // 1 above the line, -1 below it
  int size = 24;          // half points
  std::string font = {};  // empty: the usual one
  std::optional<std::uint32_t> colour = {};
  std::optional<std::uint32_t> ground = {};
  bool are_over_picture = false;  // of the page, which is not written
};

enum class RtfAlignment : std::uint8_t { kLeft, kCentred, kRight, kJustified };

struct RtfParagraph {
  RtfAlignment alignment = RtfAlignment::kLeft;
  int indent = 0;  // twips
  int above = 0;   // twips, as below
  int below = 0;
  bool is_right_to_left = false;
  std::optional<std::uint32_t> ground = {};  // of the whole line; none: that of the cell, or the paper
  std::size_t list = 0;                      // a list that it is the next item of; 0: of none
};

// Where a number stands in the format of a list level (RTF, \levelnfc).
enum class RtfNumbering : std::uint8_t {
  kDigits = 0,
  kUpperRoman = 1,
  kLowerRoman = 2,
  kUpperLetters = 3,
  kLowerLetters = 4,
  kBullets = 23
};

class RtfBody {
 public:
  static constexpr int kPageWidth = 9026;         // twips between the margins of A4
  static constexpr std::size_t kMostTables = 8;   // in each other; a program for texts shows no more
  static constexpr std::size_t kMostCells = 60;   // in a row
  static constexpr std::size_t kMostRows = 1000;  // that a cell reaches into
  static constexpr std::size_t kMostLists = 2000;
  static constexpr std::uint32_t kPaper = 0xFFFFFF;
  static constexpr char kPictureMark = '\x01';  // round the number of a picture, in what Finish gives

  // Each begins a paragraph where none is open. Letters that could not be read on the ground that is written are in the
  // reader's own colour.
  void AddText(std::string_view utf8, const RtfLetters& letters);
  void AddLineBreak();
  void AddPicture(std::size_t number);
  // What is added from now on leads there, until an empty one; of a paragraph's end too.
  void SetLink(std::string_view address);

  // Of the paragraph that is begun next; what is written goes on in the one that is open.
  void SetParagraph(const RtfParagraph& paragraph) { next_ = paragraph; }
  void EndParagraph();
  bool is_in_paragraph() const { return is_open_; }
  // A rule over the whole width.
  void AddRule();

  // 0 when there are too many; each has its own numbers.
  std::size_t AddList(RtfNumbering numbering, std::int64_t first, int indent);

  // False when there are too many in each other; then nothing was begun.
  bool BeginTable(bool has_border, std::size_t columns);
  bool MayBeginTable() const { return tables_.size() < kMostTables; }
  void BeginRow();
  // The columns and rows that it takes. Cells that reach into too many rows end early, so that the document stays
  // within a few times of the page.
  void BeginCell(std::size_t span, std::size_t rows, std::optional<std::uint32_t> ground);
  void EndCell();
  void EndRow();
  void EndTable();
  bool is_in_table() const { return !tables_.empty(); }
  bool is_in_row() const { return is_in_table() && tables_.back().has_row; }
  bool is_in_cell() const { return is_in_row() && tables_.back().has_cell; }
  // Twips that what is added now may be wide.
  int room() const;

  // The whole document, with `kPictureMark` NUMBER `kPictureMark` where pictures go.
  std::string Finish() &&;

 private:
  static constexpr std::size_t kFirstToGoOn = 60;
  static constexpr std::size_t kToGoOnPerCell = 3;

  enum class Merge : std::uint8_t { kNone, kBegins, kGoesOn };  // with the cells below
  struct Cell {
    std::size_t span;
    std::uint32_t ground;
    Merge merge = Merge::kNone;
  };
  // A cell of an earlier row that reaches into later ones.
  struct LongCell {
    std::size_t rows = 0;  // that are still to come
    Cell cell = {};
  };
  struct Table {
    bool has_border = false;
    std::size_t columns = 1;
    int width = 0;
    std::uint32_t behind = kPaper;  // the ground that it stands on
    bool has_row = false;
    bool has_cell = false;
    std::vector<Cell> cells = {};                     // of the row
    std::map<std::size_t, LongCell> long_cells = {};  // by their first column
    std::size_t may_go_on = kFirstToGoOn;             // how many pieces of long cells are still written
  };
  // What is written into: the document, and the row of each table that is open.
  struct Place {
    std::string text = {};
    bool has_paragraph = false;  // one that is not ended by \par or \cell yet
  };

  std::string& out() { return places_.back().text; }
  void BeginParagraph();
  void CloseLink();
  void FinishCell();
  void AddLongCells();
  static std::size_t NextColumn(const Table& table);
  std::uint32_t Behind() const;
  bool IsReadable(const RtfLetters& letters) const;
  void AppendTableMark();
  void AppendLetters(const RtfLetters& letters);
  std::string RowDefinition(const Table& table);
  std::size_t FontNumber(const std::string& name);
  std::size_t ColourNumber(std::uint32_t colour);
  std::string Head() const;

  std::vector<Place> places_{1};
  std::vector<Table> tables_;
  RtfParagraph next_;
  bool is_open_ = false;
  std::uint32_t ground_ = kPaper;  // of the paragraph
  std::string link_;
  bool link_is_open_ = false;
  std::vector<std::string> fonts_ = {"Times New Roman"};
  std::unordered_map<std::string, std::size_t> font_numbers_;
  std::vector<std::uint32_t> colours_;
  std::unordered_map<std::uint32_t, std::size_t> colour_numbers_;
  std::string list_table_;
  std::size_t lists_ = 0;
};

// UTF-8 as RTF writes it; control characters are left out.
void AppendRtfText(std::string& out, std::string_view utf8);

}  // namespace quillcast::html
