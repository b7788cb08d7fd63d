#include "html/html_character_names.h"

#include <algorithm>
#include <iterator>

namespace quillcast::html {
namespace {

struct NamedCharacter {
  std::string_view name;
  char16_t code;
};

// In the order of the names as bytes, for a binary search.
constexpr NamedCharacter kNamedCharacters[] = {
    {"AElig", 198},    {"AMP", 38},       {"Aacute", 193},      {"Abreve", 258},  {"Acirc", 194},   {"Acy", 1040},
    {"Agrave", 192},   {"Alpha", 913},    {"Amacr", 256},       {"Aogon", 260},   {"Aring", 197},   {"Atilde", 195},
    {"Auml", 196},     {"Bcy", 1041},     {"Beta", 914},        {"CHcy", 1063},   {"COPY", 169},    {"Cacute", 262},
    {"Ccaron", 268},   {"Ccedil", 199},   {"Ccirc", 264},       {"Cdot", 266},    {"Chi", 935},     {"DJcy", 1026},
    {"DScy", 1029},    {"DZcy", 1039},    {"Dagger", 8225},     {"Dcaron", 270},  {"Dcy", 1044},    {"Delta", 916},
    {"Dstrok", 272},   {"ENG", 330},      {"ETH", 208},         {"Eacute", 201},  {"Ecaron", 282},  {"Ecirc", 202},
    {"Ecy", 1069},     {"Edot", 278},     {"Egrave", 200},      {"Emacr", 274},   {"Eogon", 280},   {"Epsilon", 917},
    {"Eta", 919},      {"Euml", 203},     {"Fcy", 1060},        {"GJcy", 1027},   {"GT", 62},       {"Gamma", 915},
    {"Gbreve", 286},   {"Gcedil", 290},   {"Gcirc", 284},       {"Gcy", 1043},    {"Gdot", 288},    {"HARDcy", 1066},
    {"Hat", 94},       {"Hcirc", 292},    {"Hstrok", 294},      {"IEcy", 1045},   {"IJlig", 306},   {"IOcy", 1025},
    {"Iacute", 205},   {"Icirc", 206},    {"Icy", 1048},        {"Idot", 304},    {"Igrave", 204},  {"Imacr", 298},
    {"Iogon", 302},    {"Iota", 921},     {"Itilde", 296},      {"Iukcy", 1030},  {"Iuml", 207},    {"Jcirc", 308},
    {"Jcy", 1049},     {"Jsercy", 1032},  {"Jukcy", 1028},      {"KHcy", 1061},   {"KJcy", 1036},   {"Kappa", 922},
    {"Kcedil", 310},   {"Kcy", 1050},     {"LJcy", 1033},       {"LT", 60},       {"Lacute", 313},  {"Lambda", 923},
    {"Lcaron", 317},   {"Lcedil", 315},   {"Lcy", 1051},        {"Lmidot", 319},  {"Lstrok", 321},  {"Mcy", 1052},
    {"Mu", 924},       {"NJcy", 1034},    {"Nacute", 323},      {"Ncaron", 327},  {"Ncedil", 325},  {"Ncy", 1053},
    {"NewLine", 10},   {"Ntilde", 209},   {"Nu", 925},          {"OElig", 338},   {"Oacute", 211},  {"Ocirc", 212},
    {"Ocy", 1054},     {"Odblac", 336},   {"Ograve", 210},      {"Omacr", 332},   {"Omega", 937},   {"Omicron", 927},
    {"Oslash", 216},   {"Otilde", 213},   {"Ouml", 214},        {"Pcy", 1055},    {"Phi", 934},     {"Pi", 928},
    {"Prime", 8243},   {"Psi", 936},      {"QUOT", 34},         {"REG", 174},     {"Racute", 340},  {"Rcaron", 344},
    {"Rcedil", 342},   {"Rcy", 1056},     {"Rho", 929},         {"SHCHcy", 1065}, {"SHcy", 1064},   {"SOFTcy", 1068},
    {"Sacute", 346},   {"Scaron", 352},   {"Scedil", 350},      {"Scirc", 348},   {"Scy", 1057},    {"Sigma", 931},
    {"THORN", 222},    {"TRADE", 8482},   {"TSHcy", 1035},      {"TScy", 1062},   {"Tab", 9},       {"Tau", 932},
    {"Tcaron", 356},   {"Tcedil", 354},   {"Tcy", 1058},        {"Theta", 920},   {"Tstrok", 358},  {"Uacute", 218},
    {"Ubrcy", 1038},   {"Ubreve", 364},   {"Ucirc", 219},       {"Ucy", 1059},    {"Udblac", 368},  {"Ugrave", 217},
    {"Umacr", 362},    {"Uogon", 370},    {"Upsilon", 933},     {"Uring", 366},   {"Utilde", 360},  {"Uuml", 220},
    {"Vcy", 1042},     {"Wcirc", 372},    {"Xi", 926},          {"YAcy", 1071},   {"YIcy", 1031},   {"YUcy", 1070},
    {"Yacute", 221},   {"Ycirc", 374},    {"Ycy", 1067},        {"Yuml", 376},    {"ZHcy", 1046},   {"Zacute", 377},
    {"Zcaron", 381},   {"Zcy", 1047},     {"Zdot", 379},        {"Zeta", 918},    {"aacute", 225},  {"abreve", 259},
    {"acirc", 226},    {"acute", 180},    {"acy", 1072},        {"aelig", 230},   {"agrave", 224},  {"alefsym", 8501},
    {"alpha", 945},    {"amacr", 257},    {"amp", 38},          {"and", 8743},    {"ang", 8736},    {"aogon", 261},
    {"apos", 39},      {"aring", 229},    {"ast", 42},          {"asymp", 8776},  {"atilde", 227},  {"auml", 228},
    {"bcy", 1073},     {"bdquo", 8222},   {"beta", 946},        {"breve", 728},   {"brvbar", 166},  {"bsol", 92},
    {"bull", 8226},    {"bullet", 8226},  {"cacute", 263},      {"cap", 8745},    {"caret", 8257},  {"caron", 711},
    {"ccaron", 269},   {"ccedil", 231},   {"ccirc", 265},       {"cdot", 267},    {"cedil", 184},   {"cent", 162},
    {"chcy", 1095},    {"check", 10003},  {"checkmark", 10003}, {"chi", 967},     {"circ", 710},    {"clubs", 9827},
    {"colon", 58},     {"comma", 44},     {"commat", 64},       {"cong", 8773},   {"copy", 169},    {"copysr", 8471},
    {"crarr", 8629},   {"cross", 10007},  {"cup", 8746},        {"curren", 164},  {"dArr", 8659},   {"dagger", 8224},
    {"darr", 8595},    {"dash", 8208},    {"dblac", 733},       {"dcaron", 271},  {"dcy", 1076},    {"ddagger", 8225},
    {"deg", 176},      {"delta", 948},    {"diams", 9830},      {"divide", 247},  {"djcy", 1106},   {"dollar", 36},
    {"dot", 729},      {"dscy", 1109},    {"dstrok", 273},      {"dtri", 9663},   {"dtrif", 9662},  {"dzcy", 1119},
    {"eacute", 233},   {"ecaron", 283},   {"ecirc", 234},       {"ecy", 1101},    {"edot", 279},    {"egrave", 232},
    {"ell", 8467},     {"emacr", 275},    {"empty", 8709},      {"emsp", 8195},   {"emsp13", 8196}, {"emsp14", 8197},
    {"eng", 331},      {"ensp", 8194},    {"eogon", 281},       {"epsi", 949},    {"epsilon", 949}, {"equals", 61},
    {"equiv", 8801},   {"eta", 951},      {"eth", 240},         {"euml", 235},    {"euro", 8364},   {"excl", 33},
    {"exist", 8707},   {"fcy", 1092},     {"female", 9792},     {"flat", 9837},   {"fnof", 402},    {"forall", 8704},
    {"frac12", 189},   {"frac13", 8531},  {"frac14", 188},      {"frac15", 8533}, {"frac16", 8537}, {"frac18", 8539},
    {"frac23", 8532},  {"frac25", 8534},  {"frac34", 190},      {"frac35", 8535}, {"frac38", 8540}, {"frac45", 8536},
    {"frac56", 8538},  {"frac58", 8541},  {"frac78", 8542},     {"frasl", 8260},  {"gamma", 947},   {"gbreve", 287},
    {"gcirc", 285},    {"gcy", 1075},     {"gdot", 289},        {"ge", 8805},     {"gjcy", 1107},   {"grave", 96},
    {"gt", 62},        {"hArr", 8660},    {"hairsp", 8202},     {"hardcy", 1098}, {"harr", 8596},   {"hcirc", 293},
    {"hearts", 9829},  {"hellip", 8230},  {"horbar", 8213},     {"hstrok", 295},  {"hybull", 8259}, {"hyphen", 8208},
    {"iacute", 237},   {"icirc", 238},    {"icy", 1080},        {"iecy", 1077},   {"iexcl", 161},   {"igrave", 236},
    {"ijlig", 307},    {"imacr", 299},    {"image", 8465},      {"imath", 305},   {"incare", 8453}, {"infin", 8734},
    {"inodot", 305},   {"int", 8747},     {"iocy", 1105},       {"iogon", 303},   {"iota", 953},    {"iquest", 191},
    {"isin", 8712},    {"itilde", 297},   {"iukcy", 1110},      {"iuml", 239},    {"jcirc", 309},   {"jcy", 1081},
    {"jsercy", 1112},  {"jukcy", 1108},   {"kappa", 954},       {"kcedil", 311},  {"kcy", 1082},    {"kgreen", 312},
    {"khcy", 1093},    {"kjcy", 1116},    {"lArr", 8656},       {"lacute", 314},  {"lambda", 955},  {"lang", 10216},
    {"laquo", 171},    {"larr", 8592},    {"lbrace", 123},      {"lbrack", 91},   {"lcaron", 318},  {"lcedil", 316},
    {"lceil", 8968},   {"lcub", 123},     {"lcy", 1083},        {"ldquo", 8220},  {"ldquor", 8222}, {"le", 8804},
    {"lfloor", 8970},  {"ljcy", 1113},    {"lmidot", 320},      {"lowast", 8727}, {"lowbar", 95},   {"loz", 9674},
    {"lpar", 40},      {"lrm", 8206},     {"lsaquo", 8249},     {"lsqb", 91},     {"lsquo", 8216},  {"lsquor", 8218},
    {"lstrok", 322},   {"lt", 60},        {"ltri", 9667},       {"ltrif", 9666},  {"macr", 175},    {"male", 9794},
    {"malt", 10016},   {"mcy", 1084},     {"mdash", 8212},      {"micro", 181},   {"midast", 42},   {"middot", 183},
    {"minus", 8722},   {"mldr", 8230},    {"mu", 956},          {"nabla", 8711},  {"nacute", 324},  {"napos", 329},
    {"natural", 9838}, {"nbsp", 160},     {"ncaron", 328},      {"ncedil", 326},  {"ncy", 1085},    {"ndash", 8211},
    {"ne", 8800},      {"ni", 8715},      {"njcy", 1114},       {"nldr", 8229},   {"not", 172},     {"notin", 8713},
    {"nsub", 8836},    {"ntilde", 241},   {"nu", 957},          {"num", 35},      {"numero", 8470}, {"numsp", 8199},
    {"oacute", 243},   {"ocirc", 244},    {"ocy", 1086},        {"odblac", 337},  {"oelig", 339},   {"ogon", 731},
    {"ograve", 242},   {"ohm", 937},      {"oline", 8254},      {"omacr", 333},   {"omega", 969},   {"omicron", 959},
    {"oplus", 8853},   {"or", 8744},      {"ordf", 170},        {"ordm", 186},    {"oslash", 248},  {"otilde", 245},
    {"otimes", 8855},  {"ouml", 246},     {"para", 182},        {"part", 8706},   {"pcy", 1087},    {"percnt", 37},
    {"period", 46},    {"permil", 8240},  {"perp", 8869},       {"phi", 966},     {"phone", 9742},  {"pi", 960},
    {"piv", 982},      {"plus", 43},      {"plusmn", 177},      {"pound", 163},   {"prime", 8242},  {"prod", 8719},
    {"prop", 8733},    {"psi", 968},      {"puncsp", 8200},     {"quest", 63},    {"quot", 34},     {"rArr", 8658},
    {"racute", 341},   {"radic", 8730},   {"rang", 10217},      {"raquo", 187},   {"rarr", 8594},   {"rbrace", 125},
    {"rbrack", 93},    {"rcaron", 345},   {"rcedil", 343},      {"rceil", 8969},  {"rcub", 125},    {"rcy", 1088},
    {"rdquo", 8221},   {"rdquor", 8221},  {"real", 8476},       {"reg", 174},     {"rfloor", 8971}, {"rho", 961},
    {"ring", 730},     {"rlm", 8207},     {"rpar", 41},         {"rsaquo", 8250}, {"rsqb", 93},     {"rsquo", 8217},
    {"rsquor", 8217},  {"rtri", 9657},    {"rtrif", 9656},      {"rx", 8478},     {"sacute", 347},  {"sbquo", 8218},
    {"scaron", 353},   {"scedil", 351},   {"scirc", 349},       {"scy", 1089},    {"sdot", 8901},   {"sect", 167},
    {"semi", 59},      {"sext", 10038},   {"sharp", 9839},      {"shchcy", 1097}, {"shcy", 1096},   {"shy", 173},
    {"sigma", 963},    {"sigmaf", 962},   {"sim", 8764},        {"softcy", 1100}, {"sol", 47},      {"spades", 9824},
    {"squ", 9633},     {"squf", 9642},    {"star", 9734},       {"starf", 9733},  {"sub", 8834},    {"sube", 8838},
    {"sum", 8721},     {"sup", 8835},     {"sup1", 185},        {"sup2", 178},    {"sup3", 179},    {"supe", 8839},
    {"szlig", 223},    {"tau", 964},      {"tcaron", 357},      {"tcedil", 355},  {"tcy", 1090},    {"there4", 8756},
    {"theta", 952},    {"thetasym", 977}, {"thinsp", 8201},     {"thorn", 254},   {"tilde", 732},   {"times", 215},
    {"trade", 8482},   {"tscy", 1094},    {"tshcy", 1115},      {"tstrok", 359},  {"uArr", 8657},   {"uacute", 250},
    {"uarr", 8593},    {"ubrcy", 1118},   {"ubreve", 365},      {"ucirc", 251},   {"ucy", 1091},    {"udblac", 369},
    {"ugrave", 249},   {"umacr", 363},    {"uml", 168},         {"uogon", 371},   {"upsih", 978},   {"upsilon", 965},
    {"uring", 367},    {"utilde", 361},   {"utri", 9653},       {"utrif", 9652},  {"uuml", 252},    {"vcy", 1074},
    {"verbar", 124},   {"vert", 124},     {"wcirc", 373},       {"weierp", 8472}, {"xi", 958},      {"yacute", 253},
    {"yacy", 1103},    {"ycirc", 375},    {"ycy", 1099},        {"yen", 165},     {"yicy", 1111},   {"yucy", 1102},
    {"yuml", 255},     {"zacute", 378},   {"zcaron", 382},      {"zcy", 1079},    {"zdot", 380},    {"zeta", 950},
    {"zhcy", 1078},    {"zwj", 8205},     {"zwnj", 8204}};
static_assert(std::is_sorted(std::begin(kNamedCharacters), std::end(kNamedCharacters),
                             [](const NamedCharacter& a, const NamedCharacter& b) { return a.name < b.name; }));
static_assert(std::all_of(std::begin(kNamedCharacters), std::end(kNamedCharacters),
                          [](const NamedCharacter& row) { return row.name.size() <= kLongestCharacterName; }));

}  // namespace

char32_t CharacterOfName(std::string_view name) {
  const auto* const found =
      std::lower_bound(std::begin(kNamedCharacters), std::end(kNamedCharacters), name,
                       [](const NamedCharacter& row, std::string_view wanted) { return row.name < wanted; });
  return found != std::end(kNamedCharacters) && found->name == name ? found->code : 0;
}

}  // namespace quillcast::html
