// How names are written.
#include "recipients/edit/capitalise.h"

#include <gtest/gtest.h>

namespace quillcast::recipients {
namespace {

TEST(Capitalise, WritesNamesAsPeopleDo) {
  constexpr NamePart kFirst = NamePart::kFirst;
  constexpr NamePart kLast = NamePart::kLast;
  struct Case {
    const char* before;
    NamePart part;
    const char* after;
  };
  for (const Case& c : std::initializer_list<Case>{
           // Right as they are.
           {"O'Neill", kLast, "O'Neill"},
           {"McDonald", kLast, "McDonald"},
           {"van der Berg", kLast, "van der Berg"},
           {"Van Der Berg", kLast, "Van Der Berg"},
           {"DeVries", kLast, "DeVries"},
           {"LaToya", kFirst, "LaToya"},
           {"Mackey", kLast, "Mackey"},
           {"\xE6\x9D\x8E", kLast, "\xE6\x9D\x8E"},
           {"", kLast, ""},
           {"12-3", kLast, "12-3"},
           // Hyphens, apostrophes and prefixes.
           {"DUPONT-LEROY", kLast, "Dupont-Leroy"},
           {"anne-marie", kFirst, "Anne-Marie"},
           {"o'neill", kLast, "O'Neill"},
           {"O'neill", kLast, "O'Neill"},
           {"O\xE2\x80\x99NEILL", kLast, "O\xE2\x80\x99Neill"},
           {"D'ANGELO", kLast, "D'Angelo"},
           {"giscard d'estaing", kLast, "Giscard d'Estaing"},
           {"DELL'ACQUA", kLast, "Dell'Acqua"},
           {"SA'ID", kFirst, "Sa'id"},
           {"'T HOOFT", kLast, "'t Hooft"},
           {"mcdonald", kLast, "McDonald"},
           {"Mcdonald", kLast, "McDonald"},
           {"MCDONALD-SMITH", kLast, "McDonald-Smith"},
           {"mc", kLast, "Mc"},
           // Particles.
           {"VAN DER BERG", kLast, "van der Berg"},
           {"van den heuvel", kLast, "van den Heuvel"},
           {"DE LA CRUZ", kLast, "de la Cruz"},
           {"LE BLANC", kLast, "Le Blanc"},
           {"ORTEGA Y GASSET", kLast, "Ortega y Gasset"},
           {"von", kLast, "Von"},
           {"de", kFirst, "De"},
           {"VAN", kFirst, "Van"},
           {"maria del carmen", kFirst, "Maria del Carmen"},
           {"MARY E ANN", kFirst, "Mary E Ann"},
           // Initials, numbers and blanks.
           {"j.r.r.", kFirst, "J.R.R."},
           {"TJ", kFirst, "TJ"},
           {"AL", kFirst, "Al"},
           {"NG", kLast, "Ng"},
           {"SMITH III", kLast, "Smith III"},
           {"III", kLast, "Iii"},
           {" ada  lovelace ", kLast, " Ada  Lovelace "},
           // Beyond ASCII.
           {"\xC3\x89LODIE", kFirst, "\xC3\x89lodie"},
           {"\xC3\xB6zg\xC3\xBCr", kFirst, "\xC3\x96zg\xC3\xBCr"},
           {"\xCE\x9D\xCE\x99\xCE\x9A\xCE\x9F\xCE\xA3", kFirst, "\xCE\x9D\xCE\xB9\xCE\xBA\xCE\xBF\xCF\x82"},
           {"\xD0\x98\xD0\x92\xD0\x90\xD0\x9D", kFirst, "\xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD"},
           {"stra\xC3\x9F"
            "er",
            kLast,
            "Stra\xC3\x9F"
            "er"},
           {"\xFFname", kLast, "\xFFname"}}) {
    EXPECT_EQ(Capitalise(c.before, c.part), c.after) << c.before;
    EXPECT_EQ(Capitalise(c.after, c.part), c.after) << "a second time";
  }
}

}  // namespace
}  // namespace quillcast::recipients
