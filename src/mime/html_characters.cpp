// The character references of HTML: numbers, and the names of HTML 4.
#include <algorithm>
#include <array>
#include <cstdint>

#include "mime/html_tokenizer.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mime {
namespace {

struct NamedCharacter {
  std::string_view name;
  char16_t code;
};

// In the order of the names as bytes, for a binary search.
constexpr NamedCharacter kNames[] = {
    {"AElig", 198},   {"Aacute", 193},  {"Acirc", 194},    {"Agrave", 192},  {"Alpha", 913},    {"Aring", 197},
    {"Atilde", 195},  {"Auml", 196},    {"Beta", 914},     {"Ccedil", 199},  {"Chi", 935},      {"Dagger", 8225},
    {"Delta", 916},   {"ETH", 208},     {"Eacute", 201},   {"Ecirc", 202},   {"Egrave", 200},   {"Epsilon", 917},
    {"Eta", 919},     {"Euml", 203},    {"Gamma", 915},    {"Iacute", 205},  {"Icirc", 206},    {"Igrave", 204},
    {"Iota", 921},    {"Iuml", 207},    {"Kappa", 922},    {"Lambda", 923},  {"Mu", 924},       {"Ntilde", 209},
    {"Nu", 925},      {"OElig", 338},   {"Oacute", 211},   {"Ocirc", 212},   {"Ograve", 210},   {"Omega", 937},
    {"Omicron", 927}, {"Oslash", 216},  {"Otilde", 213},   {"Ouml", 214},    {"Phi", 934},      {"Pi", 928},
    {"Prime", 8243},  {"Psi", 936},     {"Rho", 929},      {"Scaron", 352},  {"Sigma", 931},    {"THORN", 222},
    {"Tau", 932},     {"Theta", 920},   {"Uacute", 218},   {"Ucirc", 219},   {"Ugrave", 217},   {"Upsilon", 933},
    {"Uuml", 220},    {"Xi", 926},      {"Yacute", 221},   {"Yuml", 376},    {"Zeta", 918},     {"aacute", 225},
    {"acirc", 226},   {"acute", 180},   {"aelig", 230},    {"agrave", 224},  {"alefsym", 8501}, {"alpha", 945},
    {"amp", 38},      {"and", 8743},    {"ang", 8736},     {"apos", 39},     {"aring", 229},    {"asymp", 8776},
    {"atilde", 227},  {"auml", 228},    {"bdquo", 8222},   {"beta", 946},    {"brvbar", 166},   {"bull", 8226},
    {"cap", 8745},    {"ccedil", 231},  {"cedil", 184},    {"cent", 162},    {"chi", 967},      {"circ", 710},
    {"clubs", 9827},  {"cong", 8773},   {"copy", 169},     {"crarr", 8629},  {"cup", 8746},     {"curren", 164},
    {"dArr", 8659},   {"dagger", 8224}, {"darr", 8595},    {"deg", 176},     {"delta", 948},    {"diams", 9830},
    {"divide", 247},  {"eacute", 233},  {"ecirc", 234},    {"egrave", 232},  {"empty", 8709},   {"emsp", 8195},
    {"ensp", 8194},   {"epsilon", 949}, {"equiv", 8801},   {"eta", 951},     {"eth", 240},      {"euml", 235},
    {"euro", 8364},   {"exist", 8707},  {"fnof", 402},     {"forall", 8704}, {"frac12", 189},   {"frac14", 188},
    {"frac34", 190},  {"frasl", 8260},  {"gamma", 947},    {"ge", 8805},     {"gt", 62},        {"hArr", 8660},
    {"harr", 8596},   {"hearts", 9829}, {"hellip", 8230},  {"iacute", 237},  {"icirc", 238},    {"iexcl", 161},
    {"igrave", 236},  {"image", 8465},  {"infin", 8734},   {"int", 8747},    {"iota", 953},     {"iquest", 191},
    {"isin", 8712},   {"iuml", 239},    {"kappa", 954},    {"lArr", 8656},   {"lambda", 955},   {"lang", 9001},
    {"laquo", 171},   {"larr", 8592},   {"lceil", 8968},   {"ldquo", 8220},  {"le", 8804},      {"lfloor", 8970},
    {"lowast", 8727}, {"loz", 9674},    {"lrm", 8206},     {"lsaquo", 8249}, {"lsquo", 8216},   {"lt", 60},
    {"macr", 175},    {"mdash", 8212},  {"micro", 181},    {"middot", 183},  {"minus", 8722},   {"mu", 956},
    {"nabla", 8711},  {"nbsp", 160},    {"ndash", 8211},   {"ne", 8800},     {"ni", 8715},      {"not", 172},
    {"notin", 8713},  {"nsub", 8836},   {"ntilde", 241},   {"nu", 957},      {"oacute", 243},   {"ocirc", 244},
    {"oelig", 339},   {"ograve", 242},  {"oline", 8254},   {"omega", 969},   {"omicron", 959},  {"oplus", 8853},
    {"or", 8744},     {"ordf", 170},    {"ordm", 186},     {"oslash", 248},  {"otilde", 245},   {"otimes", 8855},
    {"ouml", 246},    {"para", 182},    {"part", 8706},    {"permil", 8240}, {"perp", 8869},    {"phi", 966},
    {"pi", 960},      {"piv", 982},     {"plusmn", 177},   {"pound", 163},   {"prime", 8242},   {"prod", 8719},
    {"prop", 8733},   {"psi", 968},     {"quot", 34},      {"rArr", 8658},   {"radic", 8730},   {"rang", 9002},
    {"raquo", 187},   {"rarr", 8594},   {"rceil", 8969},   {"rdquo", 8221},  {"real", 8476},    {"reg", 174},
    {"rfloor", 8971}, {"rho", 961},     {"rlm", 8207},     {"rsaquo", 8250}, {"rsquo", 8217},   {"sbquo", 8218},
    {"scaron", 353},  {"sdot", 8901},   {"sect", 167},     {"shy", 173},     {"sigma", 963},    {"sigmaf", 962},
    {"sim", 8764},    {"spades", 9824}, {"sub", 8834},     {"sube", 8838},   {"sum", 8721},     {"sup", 8835},
    {"sup1", 185},    {"sup2", 178},    {"sup3", 179},     {"supe", 8839},   {"szlig", 223},    {"tau", 964},
    {"there4", 8756}, {"theta", 952},   {"thetasym", 977}, {"thinsp", 8201}, {"thorn", 254},    {"tilde", 732},
    {"times", 215},   {"trade", 8482},  {"uArr", 8657},    {"uacute", 250},  {"uarr", 8593},    {"ucirc", 251},
    {"ugrave", 249},  {"uml", 168},     {"upsih", 978},    {"upsilon", 965}, {"uuml", 252},     {"weierp", 8472},
    {"xi", 958},      {"yacute", 253},  {"yen", 165},      {"yuml", 255},    {"zeta", 950},     {"zwj", 8205},
    {"zwnj", 8204},
};

// Numbers that mean windows-1252 (WHATWG 13.2.5.80), from 0x80 on; 0 where the number means itself.
constexpr std::array<char16_t, 32> kRemapped = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr std::size_t kLongestName = 8;       // "thetasym"
constexpr std::size_t kLongestBareName = 6;   // "Aacute"; the names that go without a semicolon
constexpr std::size_t kShortestBareName = 2;  // "lt"

// A reference that was understood: its character, and how many bytes it takes with its "&". Nothing: length 0.
struct Reference {
  char32_t code = 0;
  std::size_t length = 0;
};

char32_t CodeOfName(std::string_view name) {
  const auto* const found =
      std::lower_bound(std::begin(kNames), std::end(kNames), name,
                       [](const NamedCharacter& row, std::string_view n) { return row.name < n; });
  return found != std::end(kNames) && found->name == name ? found->code : 0;
}

// Latin-1 and the four of the markup itself are known without their semicolon.
bool IsBareName(std::string_view name, char32_t code) {
  return (code >= 0xA0 && code <= 0xFF) || name == "amp" || name == "lt" || name == "gt" || name == "quot";
}

Reference ReadName(std::string_view text, bool in_attribute) {
  std::size_t end = 1;
  while (end < text.size() && end <= kLongestName && platform::AsciiIsAlnum(text[end])) ++end;
  if (end < text.size() && text[end] == ';') {
    const char32_t code = CodeOfName(text.substr(1, end - 1));
    if (code != 0) return {code, end + 1};
  }
  for (std::size_t size = std::min(end - 1, kLongestBareName); size >= kShortestBareName; --size) {
    const std::string_view name = text.substr(1, size);
    const char32_t code = CodeOfName(name);
    if (code == 0 || !IsBareName(name, code)) continue;
    const char next = size + 1 < text.size() ? text[size + 1] : ' ';
    if (in_attribute && (next == '=' || platform::AsciiIsAlnum(next))) return {};
    return {code, size + 1};
  }
  return {};
}

int DigitValue(char c, int base) {
  const char lower = platform::AsciiLower(c);
  if (c >= '0' && c <= '9') return c - '0';
  return base == 16 && lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

Reference ReadNumber(std::string_view text) {
  const bool hex = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const int base = hex ? 16 : 10;
  const std::size_t first = hex ? 3 : 2;
  std::size_t at = first;
  char32_t code = 0;
  for (; at < text.size() && DigitValue(text[at], base) >= 0; ++at) {
    code = std::min<char32_t>(code * static_cast<char32_t>(base) + static_cast<char32_t>(DigitValue(text[at], base)),
                              0x110000);
  }
  if (at == first) return {};
  if (at < text.size() && text[at] == ';') ++at;
  if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) code = 0xFFFD;
  if (code >= 0x80 && code < 0xA0 && kRemapped[code - 0x80] != 0) code = kRemapped[code - 0x80];
  return {code, at};
}

}  // namespace

std::string DecodeCharacterReferences(std::string_view text, bool in_attribute) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t plain = std::min(text.find('&'), text.size());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const bool numeric = text.size() > 1 && text[1] == '#';
    const Reference reference = numeric ? ReadNumber(text) : ReadName(text, in_attribute);
    if (reference.length == 0) {
      out += '&';
      text.remove_prefix(1);
    } else {
      platform::AppendUtf8(out, reference.code);
      text.remove_prefix(reference.length);
    }
  }
  return out;
}

}  // namespace quillcast::mime
