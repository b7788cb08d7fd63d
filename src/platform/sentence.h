// A sentence for people that keeps its pattern apart from its values, so that a face finds the pattern in another
// language before the values go in.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillcast {

// What is ours is looked up by its English and its values are put in behind that; what comes from elsewhere is never
// looked up.
class Sentence {
 public:
  Sentence() = default;
  // A whole sentence of ours, which a translation knows by its English.
  Sentence(const char* pattern) : text_(pattern), is_ours_(true) {}  // NOLINT(google-explicit-constructor)
  // What comes from elsewhere (a name, a reply, the system's words): the same in every language.
  Sentence(std::string text) : text_(std::move(text)) {}  // NOLINT(google-explicit-constructor)
  // `pattern` holds a "{}" for each value, filled in their order, or their places as "{0}", "{1}".
  Sentence(std::string_view pattern, std::vector<Sentence> values)
      : text_(pattern), values_(std::move(values)), is_ours_(true) {}

  // It says nothing, as the remedy of an error that has none.
  bool empty() const { return text_.empty(); }
  // As logs, reports and terminals have it, the values in their places.
  std::string InEnglish() const;
  // `translate` gives the pattern in the language of the face; it is asked for each pattern, not for values.
  std::string In(const std::function<std::string(const std::string& pattern)>& translate) const;

  bool operator==(const Sentence& other) const = default;

 private:
  std::string text_;
  std::vector<Sentence> values_;
  bool is_ours_ = false;
};

// A pattern with as many places as there are values; another number of them does not compile.
template <std::size_t kValues>
class SentencePattern {
 public:
  consteval SentencePattern(const char* text) : text_(text) {  // NOLINT(google-explicit-constructor)
    std::size_t places = 0;
    for (std::size_t i = text_.find('{'); i != std::string_view::npos; i = text_.find('{', i + 1)) {
      if (text_.substr(i, 2) != "{}") throw "a place in a sentence is written {}";
      ++places;
    }
    if (places != kValues) throw "a sentence needs a value for each of its places";
  }
  std::string_view text() const { return text_; }

 private:
  std::string_view text_;
};

inline Sentence ValueOf(Sentence value) { return value; }
inline Sentence ValueOf(std::string_view value) { return std::string(value); }
inline Sentence ValueOf(const std::string& value) { return value; }
inline Sentence ValueOf(const char* value) { return std::string(value); }
Sentence NumberValue(std::int64_t number);  // "1,234,567"
template <std::integral Number>
Sentence ValueOf(Number value) {
  return std::to_string(value);
}

// The sentence of a pattern and its values: Say("{} cannot be read: {}.", path, reason).
template <typename... Values>
Sentence Say(std::type_identity_t<SentencePattern<sizeof...(Values)>> pattern, const Values&... values) {
  return Sentence(pattern.text(), {ValueOf(values)...});
}

// The same of a number of things, which is the first value: `one` for 1, else `many`.
template <typename... Values>
Sentence SayOf(std::int64_t count, std::type_identity_t<SentencePattern<sizeof...(Values) + 1>> one,
               std::type_identity_t<SentencePattern<sizeof...(Values) + 1>> many, const Values&... values) {
  return Sentence((count == 1 ? one : many).text(), {NumberValue(count), ValueOf(values)...});
}

}  // namespace quillcast
