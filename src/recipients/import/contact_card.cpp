#include "recipients/import/contact_card.h"

#include <algorithm>

#include "charset/charset.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::recipients {

void ContactCard::Clear() {
  for (std::string& value : values_) value.clear();
  preferred_.fill(false);
  whole_name_.clear();
}

void ContactCard::Put(std::size_t field, std::string_view value, bool preferred) {
  value = platform::Trim(value);
  if (value.empty() || (!values_[field].empty() && (!preferred || preferred_[field]))) return;
  values_[field] = value;
  preferred_[field] = preferred;
}

void ContactCard::PutTogether(std::span<const std::pair<std::size_t, std::string>> values, bool preferred) {
  const auto is_there = [this](const auto& value) { return !values_[value.first].empty(); };
  const auto is_settled = [this](const auto& value) { return preferred_[value.first]; };
  if (std::any_of(values.begin(), values.end(), is_there)) {
    if (!preferred || std::any_of(values.begin(), values.end(), is_settled)) return;
    for (const auto& [field, value] : values) values_[field].clear();
  }
  for (const auto& [field, value] : values) Put(field, value, preferred);
}

void ContactCard::PutEmail(std::string_view address, bool preferred) {
  const std::string before = values_[kEmail];
  Put(kEmail, address, preferred);
  if (values_[kEmail] == before) {
    Put(kSecondEmail, address);
  } else if (!before.empty()) {
    values_[kSecondEmail] = before;
  }
}

void ContactCard::PutWholeName(std::string_view name) {
  if (whole_name_.empty()) whole_name_ = platform::Trim(name);
}

std::span<const std::string_view> ContactCard::Fields() {
  std::copy(values_.begin(), values_.end(), fields_.begin());
  if (fields_[kFirstName].empty() && fields_[kLastName].empty()) fields_[kFirstName] = whole_name_;
  return fields_;
}

std::string DecodeContactText(std::string_view bytes, std::string_view charset) {
  const auto named = charset::FindCharset(charset);
  if (named && !named->IsUtf8()) return named->Decode(bytes);
  if (platform::IsUtf8(bytes)) return std::string(bytes);
  return charset::FindCharset("windows-1252")->Decode(bytes);
}

std::string DecodeContactBase64(std::string_view text) {
  std::string dense;
  std::copy_if(text.begin(), text.end(), std::back_inserter(dense), [](char c) { return c != ' ' && c != '\t'; });
  return platform::DecodeBase64(dense).value_or("");
}

}  // namespace quillcast::recipients
