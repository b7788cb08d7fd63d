// How the values of a recipient become a line of a text file.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "charset/charset.h"
#include "recipients/recipient.h"

namespace quillcast::recipients {

struct ExportFormat {
  std::vector<std::size_t> fields = {kEmail};  // places in kFields, in the order of the columns
  char delimiter = ',';
  bool rfc4180 = false;         // values with a delimiter, a quote or a line end in quotes; a heading line first
  bool inert_formulas = false;  // an apostrophe before "=", "+", "-" and "@", which a spreadsheet would calculate
  std::string code_page = {};   // the locale's codeset; empty for UTF-8
};

// A value of its own that no spreadsheet calculates: with an apostrophe before it where it begins as a formula does.
std::string WithoutFormula(std::string_view value);

class ExportLines {
 public:
  // A codeset that is not served is written as UTF-8.
  explicit ExportLines(const ExportFormat& format);

  // Appends a line with its CR LF. As many values as the format has fields; as they are, except for what the format
  // says of quotes and formulas.
  void Append(std::span<const std::string_view> values, std::string& out);
  // The labels of the fields, as a line.
  void AppendHeading(std::string& out);

  const charset::Charset& charset() const { return charset_; }
  // Characters that the set of the file does not have; each was written as "?".
  std::size_t lost() const { return lost_; }

 private:
  void AppendLine(std::span<const std::string_view> values, std::string& out) const;
  void AppendValue(std::string_view value, std::string& out) const;
  void AppendInert(std::string_view value, std::string& out) const;
  std::string_view WithoutFormulas(std::string_view value, std::string& scratch) const;
  bool NeedsQuotes(std::string_view value) const;

  ExportFormat format_;
  charset::Charset charset_;
  std::string line_;
  std::size_t lost_ = 0;
};

}  // namespace quillcast::recipients
