#include "recipients/import/quoted_reader.h"

#include <algorithm>

namespace quillcast::recipients {

// A record that has grown too long keeps nothing more of its text.
void QuotedReader::Append(std::string_view text) {
  began_ = true;
  length_ += text.size();
  if (length_ > kLongestRecord) {
    text_.clear();
    ends_.clear();
  } else if (ends_.size() < most_fields_) {
    text_.append(text);
  }
}

void QuotedReader::EndField() {
  if (ends_.size() < most_fields_ && length_ <= kLongestRecord) ends_.push_back(text_.size());
  at_ = At::kFieldStart;
}

void QuotedReader::EndRecord(LineFault fault) {
  EndField();
  if (length_ > kLongestRecord && fault == LineFault::kNone) fault = LineFault::kTooLong;
  fields_.clear();
  std::size_t begin = 0;
  for (const std::size_t end : ends_) {
    fields_.push_back(std::string_view(text_).substr(begin, end - begin));
    begin = end;
  }
  if (fault != LineFault::kNone) fields_.clear();
  if (began_) wanted_ = take_({.fields = fields_, .number = first_line_, .fault = fault});
  text_.clear();
  ends_.clear();
  length_ = 0;
  began_ = false;
  first_line_ = line_;
}

// CR LF, LF and CR each end a line.
void QuotedReader::CountLine(char c) {
  if (c == '\r' || (c == '\n' && !skip_feed_)) ++line_;
  skip_feed_ = c == '\r';
}

// Outside quotes. How much of `rest` it took.
std::size_t QuotedReader::StepPlain(std::string_view rest) {
  const char special[] = {delimiter_, '\r', '\n'};
  const auto length = std::min(rest.find_first_of(std::string_view(special, sizeof special)), rest.size());
  if (length > 0) {
    Append(rest.substr(0, length));
    at_ = At::kPlain;
    skip_feed_ = false;
    return length;
  }
  const char c = rest.front();
  if (c == delimiter_) {
    skip_feed_ = false;
    ++length_;
    EndField();
    began_ = true;
    return 1;
  }
  const bool belongs_to_the_last = c == '\n' && skip_feed_;
  CountLine(c);
  if (belongs_to_the_last) {
    first_line_ = line_;
    skip_feed_ = false;
  } else {
    EndRecord(LineFault::kNone);
  }
  return 1;
}

std::size_t QuotedReader::StepQuoted(std::string_view rest) {
  const auto length = std::min(rest.find('"'), rest.size());
  for (const char c : rest.substr(0, length)) CountLine(c);
  Append(rest.substr(0, length));
  if (length == rest.size()) return length;
  skip_feed_ = false;
  at_ = At::kQuoteInQuoted;
  return length + 1;
}

std::size_t QuotedReader::Step(std::string_view rest) {
  switch (at_) {
    case At::kFieldStart:
      if (rest.front() != '"') return StepPlain(rest);
      began_ = true;
      skip_feed_ = false;
      at_ = At::kQuoted;
      return 1;
    case At::kQuoted:
      return StepQuoted(rest);
    case At::kQuoteInQuoted:
      if (rest.front() != '"') {
        at_ = At::kBehindQuoted;
        return 0;
      }
      Append("\"");
      at_ = At::kQuoted;
      return 1;
    case At::kPlain:
    case At::kBehindQuoted:
      break;
  }
  return StepPlain(rest);
}

bool QuotedReader::Feed(std::string_view piece) {
  while (wanted_ && !piece.empty()) piece.remove_prefix(Step(piece));
  return wanted_;
}

void QuotedReader::Finish() {
  if (wanted_ && began_) EndRecord(at_ == At::kQuoted ? LineFault::kOpenQuote : LineFault::kNone);
}

}  // namespace quillcast::recipients
