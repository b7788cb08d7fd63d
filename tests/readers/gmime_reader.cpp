// Reads the message files that are named on standard input and writes what GMime makes of each as a line of JSON.
#include <gmime/gmime.h>

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using Json = nlohmann::ordered_json;

struct Release {
  template <typename T>
  void operator()(T* object) const {
    g_object_unref(object);
  }
  void operator()(char* text) const { g_free(text); }
  void operator()(GMimeParserOptions* options) const { g_mime_parser_options_free(options); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

Json TextOrNull(const char* text) { return text == nullptr ? Json() : Json(text); }

Json FirstMailbox(InternetAddressList* list) {
  InternetAddress* first = list == nullptr ? nullptr : internet_address_list_get_address(list, 0);
  if (first == nullptr || !INTERNET_ADDRESS_IS_MAILBOX(first)) return Json();
  const char* name = internet_address_get_name(first);
  return {name == nullptr ? "" : name, internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(first)),
          internet_address_list_length(list)};
}

std::string Content(GMimePart* part) {
  const Owned<GMimeStream> stream(g_mime_stream_mem_new());
  GMimeDataWrapper* content = g_mime_part_get_content(part);
  if (content != nullptr) g_mime_data_wrapper_write_to_stream(content, stream.get());
  const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
  return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

Json PartOf(GMimeObject* object) {
  auto* part = GMIME_PART(object);
  GMimeContentType* type = g_mime_object_get_content_type(object);
  const Owned<char> mime_type(g_mime_content_type_get_mime_type(type));
  const std::string content = Content(part);
  const Owned<char> base64(g_base64_encode(reinterpret_cast<const guchar*>(content.data()), content.size()));
  const Owned<char> digest(
      g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(content.data()), content.size()));
  Json row = {{"type", mime_type.get()},
              {"charset", TextOrNull(g_mime_content_type_get_parameter(type, "charset"))},
              {"disposition", TextOrNull(g_mime_object_get_disposition(object))},
              {"file_name", TextOrNull(g_mime_part_get_filename(part))},
              {"content_id", TextOrNull(g_mime_part_get_content_id(part))},
              {"sha256", digest.get()}};
  if (!GMIME_IS_TEXT_PART(object) || g_mime_object_get_disposition(object) != nullptr) return row;
  const Owned<char> text(g_mime_text_part_get_text(GMIME_TEXT_PART(object)));
  row["text"] = TextOrNull(text.get());
  row["octets"] = base64.get();
  return row;
}

void AddParts(GMimeObject* object, Json& parts) {
  if (GMIME_IS_PART(object)) {
    parts.push_back(PartOf(object));
  } else if (GMIME_IS_MULTIPART(object)) {
    auto* multipart = GMIME_MULTIPART(object);
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i) {
      AddParts(g_mime_multipart_get_part(multipart, i), parts);
    }
  }
}

Json Read(const std::string& file, GMimeParserOptions* options) {
  Json row = {{"file", file}};
  const Owned<GMimeStream> stream(g_mime_stream_file_open(file.c_str(), "r", nullptr));
  if (!stream) return row;
  const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  const Owned<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), options));
  if (!message) return row;
  row["subject"] = TextOrNull(g_mime_message_get_subject(message.get()));
  row["from"] = FirstMailbox(g_mime_message_get_from(message.get()));
  row["to"] = FirstMailbox(g_mime_message_get_to(message.get()));
  row["parts"] = Json::array();
  AddParts(g_mime_message_get_mime_part(message.get()), row["parts"]);
  return row;
}

}  // namespace

int main() {
  g_mime_init();
  const Owned<GMimeParserOptions> options(g_mime_parser_options_new());
  // Strict: what only a lenient reader would guess is a fault.
  g_mime_parser_options_set_rfc2047_compliance_mode(options.get(), GMIME_RFC_COMPLIANCE_STRICT);
  g_mime_parser_options_set_parameter_compliance_mode(options.get(), GMIME_RFC_COMPLIANCE_STRICT);
  for (std::string file; std::getline(std::cin, file);) {
    // A set that is not known here leaves octets that are no UTF-8.
    std::cout << Read(file, options.get()).dump(-1, ' ', true, Json::error_handler_t::replace) << '\n';
  }
  g_mime_shutdown();
  return 0;
}
