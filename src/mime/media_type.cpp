#include "mime/media_type.h"

#include <algorithm>
#include <string>

#include "platform/text.h"

namespace quillcast::mime {
namespace {

struct ExtensionRow {
  std::string_view extension;
  std::string_view media_type;
};
// In the order of the extensions, for a binary search.
constexpr ExtensionRow kExtensions[] = {
    {"7z", "application/x-7z-compressed"},
    {"aac", "audio/aac"},
    {"ai", "application/postscript"},
    {"apk", "application/vnd.android.package-archive"},
    {"asc", "text/plain"},
    {"avi", "video/x-msvideo"},
    {"avif", "image/avif"},
    {"bmp", "image/bmp"},
    {"bz2", "application/x-bzip2"},
    {"css", "text/css"},
    {"csv", "text/csv"},
    {"doc", "application/msword"},
    {"docm", "application/vnd.ms-word.document.macroEnabled.12"},
    {"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    {"dotx", "application/vnd.openxmlformats-officedocument.wordprocessingml.template"},
    {"eml", "message/rfc822"},
    {"eps", "application/postscript"},
    {"epub", "application/epub+zip"},
    {"flac", "audio/flac"},
    {"gif", "image/gif"},
    {"gz", "application/gzip"},
    {"heic", "image/heic"},
    {"htm", "text/html"},
    {"html", "text/html"},
    {"ico", "image/vnd.microsoft.icon"},
    {"ics", "text/calendar"},
    {"jar", "application/java-archive"},
    {"jpe", "image/jpeg"},
    {"jpeg", "image/jpeg"},
    {"jpg", "image/jpeg"},
    {"js", "text/javascript"},
    {"json", "application/json"},
    {"log", "text/plain"},
    {"m4a", "audio/mp4"},
    {"m4v", "video/mp4"},
    {"md", "text/markdown"},
    {"mid", "audio/midi"},
    {"mov", "video/quicktime"},
    {"mp3", "audio/mpeg"},
    {"mp4", "video/mp4"},
    {"mpeg", "video/mpeg"},
    {"mpg", "video/mpeg"},
    {"msg", "application/vnd.ms-outlook"},
    {"odp", "application/vnd.oasis.opendocument.presentation"},
    {"ods", "application/vnd.oasis.opendocument.spreadsheet"},
    {"odt", "application/vnd.oasis.opendocument.text"},
    {"oga", "audio/ogg"},
    {"ogg", "audio/ogg"},
    {"ogv", "video/ogg"},
    {"opus", "audio/ogg"},
    {"otf", "font/otf"},
    {"p7m", "application/pkcs7-mime"},
    {"p7s", "application/pkcs7-signature"},
    {"pdf", "application/pdf"},
    {"png", "image/png"},
    {"pps", "application/vnd.ms-powerpoint"},
    {"ppt", "application/vnd.ms-powerpoint"},
    {"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    {"ps", "application/postscript"},
    {"rar", "application/vnd.rar"},
    {"rtf", "application/rtf"},
    {"svg", "image/svg+xml"},
    {"tar", "application/x-tar"},
    {"tgz", "application/gzip"},
    {"tif", "image/tiff"},
    {"tiff", "image/tiff"},
    {"ttf", "font/ttf"},
    {"txt", "text/plain"},
    {"vcf", "text/vcard"},
    {"vsd", "application/vnd.visio"},
    {"wav", "audio/wav"},
    {"webm", "video/webm"},
    {"webp", "image/webp"},
    {"woff", "font/woff"},
    {"woff2", "font/woff2"},
    {"xhtml", "application/xhtml+xml"},
    {"xls", "application/vnd.ms-excel"},
    {"xlsm", "application/vnd.ms-excel.sheet.macroEnabled.12"},
    {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    {"xml", "application/xml"},
    {"xz", "application/x-xz"},
    {"zip", "application/zip"},
    {"zst", "application/zstd"},
};
static_assert(std::is_sorted(std::begin(kExtensions), std::end(kExtensions),
                             [](const ExtensionRow& a, const ExtensionRow& b) { return a.extension < b.extension; }));

// How a picture file begins: `mark` at its start, and `second` at `offset` where one mark is not enough.
struct SignatureRow {
  std::string_view mark;
  std::size_t offset;
  std::string_view second;
  std::string_view media_type;
};
constexpr SignatureRow kSignatures[] = {
    {"\x89PNG\r\n\x1A\n", 0, "", "image/png"},
    {"\xFF\xD8\xFF", 0, "", "image/jpeg"},
    {"GIF87a", 0, "", "image/gif"},
    {"GIF89a", 0, "", "image/gif"},
    {"RIFF", 8, "WEBP", "image/webp"},
    {"", 4, "ftypavif", "image/avif"},
    {"", 4, "ftypavis", "image/avif"},
};

bool IsBitmap(std::string_view bytes) {
  // "BM" begins texts as well; the four reserved bytes are 0 in every bitmap.
  return bytes.size() >= 14 && bytes.starts_with("BM") && bytes.substr(6, 4) == std::string_view("\0\0\0\0", 4);
}

// The first element is <svg>, after a declaration, comments and a document type.
bool IsSvg(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  for (bytes = platform::Trim(bytes); bytes.starts_with("<?") || bytes.starts_with("<!");
       bytes = platform::Trim(bytes)) {
    const std::string_view close = bytes.starts_with("<!--") ? "-->" : ">";
    const std::size_t end = bytes.find(close);
    if (end == std::string_view::npos) return false;
    bytes.remove_prefix(end + close.size());
  }
  return bytes.starts_with("<svg") || bytes.starts_with("<svg:svg");
}

}  // namespace

std::string_view MediaTypeOf(std::string_view file_name, std::string_view first_bytes) {
  for (const SignatureRow& row : kSignatures) {
    const bool second = first_bytes.size() > row.offset && first_bytes.substr(row.offset).starts_with(row.second);
    if (first_bytes.starts_with(row.mark) && second) return row.media_type;
  }
  if (IsBitmap(first_bytes)) return "image/bmp";
  if (IsSvg(first_bytes)) return "image/svg+xml";
  const std::size_t dot = file_name.find_last_of("./");
  const std::string extension =
      dot == std::string_view::npos || file_name[dot] == '/' ? "" : platform::AsciiLower(file_name.substr(dot + 1));
  const auto* const found =
      std::lower_bound(std::begin(kExtensions), std::end(kExtensions), extension,
                       [](const ExtensionRow& row, const std::string& wanted) { return row.extension < wanted; });
  const bool known = found != std::end(kExtensions) && found->extension == extension;
  return known ? found->media_type : "application/octet-stream";
}

}  // namespace quillcast::mime
