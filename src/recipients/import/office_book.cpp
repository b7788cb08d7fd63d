#include "recipients/import/office_book.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "recipients/import/xml_reader.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kFolder = "xl/";
constexpr std::size_t kLongestPart = 1000;  // bytes of a name
constexpr std::size_t kMostRelations = 20'000;

// "/xl/styles.xml" and "styles.xml" are the same part.
std::string PartOfTarget(std::string_view target) {
  if (target.starts_with('/')) return std::string(target.substr(1));
  return std::string(kFolder).append(target);
}

class Relations final : public XmlListener {
 public:
  explicit Relations(OfficeBook& book) : book_(book) {}

  void Begin(std::string_view element, const XmlAttributes& attributes) override {
    if (element != "Relationship") return;
    const std::string_view type = attributes.Value("Type");
    if (attributes.Value("Target").size() > kLongestPart) return;
    std::string part = PartOfTarget(attributes.Value("Target"));
    if (type.ends_with("/sharedStrings")) book_.texts_part = part;
    if (type.ends_with("/styles")) book_.formats_part = part;
    parts_[std::string(attributes.Value("Id"))] = std::move(part);
  }
  void Text(std::string_view) override {}
  void End(std::string_view) override {}
  bool HasEnough() const override { return parts_.size() > kMostRelations; }
  const std::map<std::string, std::string, std::less<>>& parts() const { return parts_; }

 private:
  OfficeBook& book_;
  std::map<std::string, std::string, std::less<>> parts_;
};

class Workbook final : public XmlListener {
 public:
  Workbook(const Relations& relations, OfficeBook& book) : relations_(relations), book_(book) {}

  void Begin(std::string_view element, const XmlAttributes& attributes) override {
    if (element == "workbookPr") {
      const auto from_1904 = attributes.Value("date1904");
      if (from_1904 == "1" || from_1904 == "true") book_.formats.CountFrom1904();
    }
    if (element != "sheet") return;
    const auto part = relations_.parts().find(attributes.Value("id"));
    if (part != relations_.parts().end()) book_.sheets.push_back({std::string(attributes.Value("name")), part->second});
  }
  void Text(std::string_view) override {}
  void End(std::string_view) override {}
  bool HasEnough() const override { return book_.sheets.size() > kMostSheets; }

 private:
  const Relations& relations_;
  OfficeBook& book_;
};

// Texts stand in <si><t>, or in pieces in <si><r><t>; how they are pronounced, in <rPh>, is none of it.
class Texts final : public XmlListener {
 public:
  explicit Texts(SharedTexts& texts) : texts_(texts) {}

  void Begin(std::string_view element, const XmlAttributes&) override {
    if (element == "t") in_text_ = !in_phonetic_;
    if (element == "rPh") in_phonetic_ = true;
  }
  void Text(std::string_view text) override {
    if (in_text_) texts_.Append(text);
  }
  void End(std::string_view element) override {
    if (element == "t") in_text_ = false;
    if (element == "rPh") in_phonetic_ = false;
    if (element == "si") texts_.End();
  }
  bool HasEnough() const override { return texts_.has_too_many(); }

 private:
  SharedTexts& texts_;
  bool in_text_ = false;
  bool in_phonetic_ = false;
};

class Formats final : public XmlListener {
 public:
  explicit Formats(NumberFormats& formats) : formats_(formats) {}

  void Begin(std::string_view element, const XmlAttributes& attributes) override {
    if (element == "cellXfs") in_cells_ = true;
    if (element == "numFmt") formats_.AddCode(attributes.Number("numFmtId"), attributes.Value("formatCode"));
    if (element == "xf" && in_cells_) formats_.AddCellFormat(attributes.Number("numFmtId"));
  }
  void Text(std::string_view) override {}
  void End(std::string_view element) override {
    if (element == "cellXfs") in_cells_ = false;
  }
  bool HasEnough() const override { return formats_.has_too_many(); }

 private:
  NumberFormats& formats_;
  bool in_cells_ = false;
};

// The column of "AB12", counted from 0; `next` where the cell does not say where it is.
std::size_t ColumnOf(std::string_view place, std::size_t next) {
  std::size_t column = 0;
  for (const char c : place) {
    if (c < 'A' || c > 'Z' || column > SheetRow::kMostColumns) break;
    column = column * 26 + static_cast<std::size_t>(c - 'A' + 1);
  }
  return column == 0 ? next : column - 1;
}

enum class CellType : std::uint8_t { kNumber, kShared, kText, kBoolean, kFault };

CellType TypeOf(std::string_view name) {
  if (name.empty() || name == "n") return CellType::kNumber;
  if (name == "s") return CellType::kShared;
  if (name == "b") return CellType::kBoolean;
  return name == "e" ? CellType::kFault : CellType::kText;
}

class Sheet final : public XmlListener {
 public:
  Sheet(const OfficeBook& book, SheetRow& row) : book_(book), row_(row) {}

  void Begin(std::string_view element, const XmlAttributes& attributes) override {
    if (element == "c") {
      column_ = ColumnOf(attributes.Value("r"), column_);
      type_ = TypeOf(attributes.Value("t"));
      format_ = attributes.Number("s");
      text_.clear();
    } else if (element == "row") {
      const auto number = attributes.Number("r");
      number_ = number == 0 ? number_ + 1 : number;
      column_ = 0;
    } else {
      in_value_ = !in_phonetic_ && (element == "v" || element == "t");
      in_phonetic_ = in_phonetic_ || element == "rPh";
    }
  }
  void Text(std::string_view text) override {
    if (in_value_) AppendToCell(text_, text);
  }
  void End(std::string_view element) override {
    in_value_ = false;
    if (element == "rPh") in_phonetic_ = false;
    if (element == "c") EndCell();
    if (element == "row") row_.End(number_);
  }
  bool HasEnough() const override { return !row_.is_wanted() || row_.has_too_many(); }

 private:
  void EndCell() {
    const std::size_t column = column_++;
    if (text_.empty()) return;
    if (type_ == CellType::kText) return row_.Put(column, text_);
    if (type_ == CellType::kBoolean) return row_.Put(column, text_ == "0" ? "FALSE" : "TRUE");
    if (type_ == CellType::kFault) return;
    if (type_ == CellType::kShared) return row_.Put(column, Shared());
    double number = 0;
    const auto end = std::from_chars(text_.data(), text_.data() + text_.size(), number);
    row_.Put(column, end.ec == std::errc() ? book_.formats.TextOf(number, format_) : text_);
  }
  std::string_view Shared() const {
    std::size_t number = 0;
    const auto end = std::from_chars(text_.data(), text_.data() + text_.size(), number);
    return end.ec == std::errc() ? book_.texts.At(number) : std::string_view();
  }

  const OfficeBook& book_;
  SheetRow& row_;
  std::int64_t number_ = 0;
  std::size_t column_ = 0;
  CellType type_ = CellType::kNumber;
  std::size_t format_ = 0;
  std::string text_;
  bool in_value_ = false;
  bool in_phonetic_ = false;
};

}  // namespace

std::string_view SharedTexts::At(std::size_t number) const {
  if (number >= ends_.size()) return {};
  const std::size_t begin = number == 0 ? 0 : ends_[number - 1];
  return std::string_view(text_).substr(begin, ends_[number] - begin);
}

std::string ReadBook(std::string_view workbook, std::string_view relations, OfficeBook& book) {
  Relations read(book);
  if (auto failed = ReadXml(relations, read); !failed.empty()) return failed;
  if (read.HasEnough()) return "it has more parts than any list";
  Workbook listener(read, book);
  auto failed = ReadXml(workbook, listener);
  return listener.HasEnough() ? kTooManySheets : failed;
}

std::string ReadTexts(std::string_view xml, SharedTexts& texts, const platform::CancelToken* cancel) {
  Texts listener(texts);
  auto failed = ReadXml(xml, listener, cancel);
  return listener.HasEnough() ? "it has more texts than any list" : failed;
}

std::string ReadFormats(std::string_view xml, NumberFormats& formats) {
  Formats listener(formats);
  return ReadXml(xml, listener);
}

std::string ReadOfficeSheet(std::string_view xml, const OfficeBook& book, SheetRow& row,
                            const platform::CancelToken* cancel) {
  Sheet listener(book, row);
  return ReadXml(xml, listener, cancel);
}

}  // namespace quillcast::recipients
