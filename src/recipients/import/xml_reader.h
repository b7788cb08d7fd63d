// Reads a part of a document that is XML, element by element.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::recipients {

// Of the element that begins, for as long as it does. Names are told without their prefix: formats use each name once.
class XmlAttributes {
 public:
  // Empty where there is no such attribute.
  std::string_view Value(std::string_view name) const;
  // 0 where it is none, or no number.
  std::uint32_t Number(std::string_view name) const;

  // `name` and `raw`, a value with its references, are not copied. False where they are more than any element has.
  bool Add(std::string_view name, std::string_view raw);
  void Clear();

 private:
  static constexpr std::size_t kMost = 1000;
  static constexpr std::size_t kMostBytes = std::size_t{1024} * 1024;

  struct Attribute {
    std::string_view name;
    std::string_view raw;
    bool has_references = false;
    std::size_t decoded_at = 0;  // where it has, in decoded_
    std::size_t decoded_size = 0;
  };
  std::vector<Attribute> attributes_;
  std::string decoded_;
  std::string scratch_;
  std::size_t bytes_ = 0;  // of names and values
};

class XmlListener {
 public:
  virtual ~XmlListener() = default;
  virtual void Begin(std::string_view element, const XmlAttributes& attributes) = 0;
  // A text may come in pieces.
  virtual void Text(std::string_view text) = 0;
  virtual void End(std::string_view element) = 0;
  // Asked after each element; true ends the reading.
  virtual bool HasEnough() const { return false; }
};

// Why it is no XML, empty where it is, and where `cancel` ended the reading.
std::string ReadXml(std::string_view xml, XmlListener& listener, const platform::CancelToken* cancel = nullptr);

}  // namespace quillcast::recipients
