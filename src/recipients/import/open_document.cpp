#include "recipients/import/open_document.h"

#include <algorithm>
#include <charconv>

#include "platform/text.h"
#include "recipients/import/number_formats.h"
#include "recipients/import/xml_reader.h"

namespace quillcast::recipients {
namespace {

// "2024-03-01T12:30:00" as people see it.
std::string DateText(std::string_view value) {
  std::string text(value.substr(0, value.find('.')));
  const auto time = text.find('T');
  if (time == std::string::npos) return text;
  if (text.substr(time) == "T00:00:00") return text.substr(0, time);
  text[time] = ' ';
  return text;
}

class Sheets final : public XmlListener {
 public:
  Sheets(std::string_view wanted, SheetRow& row, OpenSheets& sheets) : wanted_(wanted), row_(row), sheets_(sheets) {}

  void Begin(std::string_view element, const XmlAttributes& attributes) override {
    if (element == "table") {
      BeginTable(attributes);
    } else if (element == "table-row") {
      repeated_ = std::max<std::uint32_t>(attributes.Number("number-rows-repeated"), 1);
      column_ = 0;
    } else if (element == "table-cell" || element == "covered-table-cell") {
      BeginCell(attributes);
    } else if (element == "annotation") {
      ++notes_;
    } else if (notes_ == 0) {
      BeginText(element, attributes);
    }
  }
  void Text(std::string_view text) override {
    if (paragraphs_ > 0 && notes_ == 0) AppendToCell(text_, text);
  }
  void End(std::string_view element) override {
    if (element == "annotation") --notes_;
    if (element == "p" && notes_ == 0) --paragraphs_;
    if (element == "table-cell" || element == "covered-table-cell") EndCell();
    if (element == "table-row") EndRow();
    if (element == "table") EndTable();
  }
  bool HasEnough() const override {
    return !row_.is_wanted() || row_.has_too_many() || (!wanted_.empty() && is_taken_);
  }

 private:
  static constexpr std::uint32_t kMostBlanks = 1000;

  void BeginTable(const XmlAttributes& attributes) {
    number_ = 0;
    has_cells_ = false;
    name_ = attributes.Value("name");
    is_passed_over_ = is_taken_ || (!wanted_.empty() && name_ != wanted_);
    if (is_passed_over_) return;
    sheets_.has_wanted = true;
    sheets_.taken = name_;
  }
  void BeginCell(const XmlAttributes& attributes) {
    columns_ = std::max<std::uint32_t>(attributes.Number("number-columns-repeated"), 1);
    type_ = attributes.Value("value-type");
    value_ = attributes.Value(type_ == "date" ? "date-value" : "value");
    text_.clear();
    has_paragraph_ = false;
  }
  void BeginText(std::string_view element, const XmlAttributes& attributes) {
    if (element == "p") {
      if (has_paragraph_) AppendToCell(text_, "\n");
      has_paragraph_ = true;
      ++paragraphs_;
    } else if (element == "s") {
      AppendToCell(text_, std::string(std::clamp<std::uint32_t>(attributes.Number("c"), 1, kMostBlanks), ' '));
    } else if (element == "tab") {
      AppendToCell(text_, "\t");
    } else if (element == "line-break") {
      AppendToCell(text_, "\n");
    }
  }
  // A number as it stands where it is shown as digits, leading zeros and all; not as "1,234.50 EUR".
  std::string CellText() const {
    if (type_ == "date") return DateText(value_);
    const bool is_number = type_ == "float" || type_ == "currency" || type_ == "percentage";
    if (!is_number || (!text_.empty() && text_.find_first_not_of("0123456789") == std::string::npos)) return text_;
    double number = 0;
    const auto end = std::from_chars(value_.data(), value_.data() + value_.size(), number);
    return end.ec == std::errc() ? NumberText(number) : text_;
  }
  void EndCell() {
    const std::size_t first = std::min<std::size_t>(column_, SheetRow::kMostColumns);
    const std::size_t end = std::min<std::size_t>(first + columns_, SheetRow::kMostColumns);
    column_ = end;
    const std::string text = CellText();
    if (text.empty()) return;
    has_cells_ = true;
    for (std::size_t column = first; column < end && !is_passed_over_; ++column) row_.Put(column, text);
  }
  // A row that is repeated is the same recipient again.
  void EndRow() {
    if (!is_passed_over_) row_.End(number_ + 1);
    number_ += repeated_;
  }
  void EndTable() {
    if (!has_cells_ && wanted_.empty()) return;
    if (is_taken_) ++sheets_.left_unread;
    is_taken_ = is_taken_ || !is_passed_over_;
  }

  std::string_view wanted_;
  SheetRow& row_;
  OpenSheets& sheets_;
  std::string name_;
  bool is_taken_ = false;        // a sheet before this one
  bool is_passed_over_ = false;  // this one
  bool has_cells_ = false;       // this one
  std::int64_t number_ = 0;
  std::uint32_t repeated_ = 1;
  std::size_t column_ = 0;
  std::uint32_t columns_ = 1;
  std::string type_;
  std::string value_;
  std::string text_;
  bool has_paragraph_ = false;
  int paragraphs_ = 0;
  int notes_ = 0;
};

class SheetNames final : public XmlListener {
 public:
  explicit SheetNames(std::vector<std::string>& names) : names_(names) {}
  void Begin(std::string_view element, const XmlAttributes& attributes) override {
    if (element == "table") names_.emplace_back(attributes.Value("name"));
  }
  bool HasEnough() const override { return names_.size() > kMostSheets; }
  void Text(std::string_view) override {}
  void End(std::string_view) override {}

 private:
  std::vector<std::string>& names_;
};

}  // namespace

std::string ReadOpenSheets(std::string_view xml, std::string_view wanted, SheetRow& row, OpenSheets& sheets,
                           const platform::CancelToken* cancel) {
  Sheets listener(wanted, row, sheets);
  return ReadXml(xml, listener, cancel);
}

std::string ListOpenSheets(std::string_view xml, std::vector<std::string>& names, const platform::CancelToken* cancel) {
  SheetNames listener(names);
  auto failed = ReadXml(xml, listener, cancel);
  return listener.HasEnough() ? kTooManySheets : failed;
}

}  // namespace quillcast::recipients
