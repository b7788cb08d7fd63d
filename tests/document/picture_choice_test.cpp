// A picture of the message: how large it may be, what is checked, and what it is in HTML.
#include "document/picture_choice.h"

#include <gtest/gtest.h>

#include "document/cut_picture.h"
#include "document/picture_sizes.h"

namespace quillcast::profile {

static void PrintTo(PixelSize size, std::ostream* out) { *out << size.width << 'x' << size.height; }

}  // namespace quillcast::profile

namespace quillcast::document {
namespace {

using profile::PixelSize;

TEST(PictureSizes, KeepTheRatioAndTheLetter) {
  struct Case {
    PixelSize natural;
    int room;
    PixelSize first;  // as it goes into the message
    bool is_large;
  };
  for (const Case& c :
       std::initializer_list<Case>{Case{{400, 300}, 0, {400, 300}, false}, Case{{600, 1}, 0, {600, 1}, false},
                                   Case{{601, 400}, 0, {600, 399}, false}, Case{{1200, 900}, 0, {600, 450}, false},
                                   Case{{1201, 900}, 0, {600, 450}, true}, Case{{4000, 3000}, 200, {200, 150}, true},
                                   Case{{4000, 3000}, 5000, {600, 450}, true}, Case{{100000, 1}, 0, {600, 1}, true},
                                   Case{{1, 100000}, 300, {1, 9999}, false}, Case{{600, 12000}, 0, {500, 9999}, false},
                                   Case{{1200, 24000}, 0, {500, 9999}, false}, Case{{600, 9999}, 0, {600, 9999}, false},
                                   Case{{300, 200}, -1, {300, 200}, false}}) {
    EXPECT_EQ(FirstSize(c.natural, c.room), c.first) << c.natural.width << " in " << c.room;
    EXPECT_EQ(IsLargePhotograph(c.natural, 300'000), c.is_large) << c.natural.width;
    EXPECT_TRUE(IsLargePhotograph(c.natural, 300'001));
    EXPECT_TRUE(KeepsRatio(c.first, c.natural));
  }
  for (const auto& [size, allowed] : {std::pair{PixelSize{12000, 600}, PixelSize{9999, 500}},
                                      {{12000, 24000}, {5000, 9999}},
                                      {{9999, 9999}, {9999, 9999}},
                                      {{12000, 0}, {9999, 0}},
                                      {{0, 12000}, {0, 9999}}}) {
    EXPECT_EQ(NoLongerThanAllowed(size), allowed) << size.width << 'x' << size.height;
  }
  EXPECT_EQ(Upright({4000, 3000}, true), (PixelSize{3000, 4000}));
  EXPECT_EQ(Upright({4000, 3000}, false), (PixelSize{4000, 3000}));
  EXPECT_EQ(WidthFor(150, {4000, 3000}), 200);
  EXPECT_EQ(HeightFor(9999, {1, 2'000'000'000}), INT32_MAX);
  EXPECT_EQ(HeightFor(7, {0, 0}), 7);  // of a picture that is not there
  EXPECT_FALSE(KeepsRatio({200, 100}, {4000, 3000}));
}

TEST(PictureChoice, IsCheckedAndBecomesHtml) {
  struct Case {
    PictureChoice choice;
    const char* result;  // the message, and which box it is about; or the attributes
  };
  for (const Case& c : std::initializer_list<Case>{
           {{"", "", "300"}, "Please enter your width. 0"},
           {{"", "0", "300"}, "Please enter a valid width. 0"},
           {{"", "10000", "300"}, "Please enter a valid width. 0"},
           {{"", "1.5", "300"}, "Please enter a valid width. 0"},
           {{"", " 12", "300"}, "Please enter a valid width. 0"},
           {{"", "\u0661", "300"}, "Please enter a valid width. 0"},
           {{"", "1", ""}, "Please enter your height. 1"},
           {{"", "1", "-1"}, "Please enter a valid height. 1"},
           {{"", "1", "1", ""}, "Please enter your border. 2"},
           {{"", "1", "1", "100"}, "Please enter a valid border. 2"},
           {{"", "1", "0", "100"}, "Please enter a valid height. 1"},
           {{"", std::string(100000, '9'), "1"}, "Please enter a valid width. 0"},
           {{"", "400", "300"}, R"(alt="" width="400" height="300" border="0" style="max-width: 100%; height: auto;")"},
           {{"a \"b\" <c> & d", "9999", "1", "99", "Left"},
            R"(alt="a &quot;b&quot; &lt;c&gt; &amp; d" width="9999" height="1" border="99" align="left")"
            R"( style="max-width: 100%;")"},
       }) {
    const auto complaint = CheckPicture(c.choice);
    std::string result;
    if (complaint) {
      result = complaint->message + ' ' + std::to_string(static_cast<int>(*complaint->control));
    } else {
      result = PictureHtml("file:///a&b", c.choice, {4000, 3000});
      ASSERT_TRUE(result.starts_with("<img src=\"file:///a&amp;b\" ") && result.ends_with('>')) << result;
      result = result.substr(27, result.size() - 28);
    }
    EXPECT_EQ(result, c.result);
  }
}

TEST(PictureChoice, AlternativeTextIsWordsOrNothing) {
  for (const auto& [file, text] : {std::pair{"/home/ada/our-new_shop.jpeg", "our new shop"},
                                   {"Der Süßwarenladen.png", "Der Süßwarenladen"},
                                   {"IMG_2034.jpg", ""},
                                   {"logo.png", ""},
                                   {"photo 1.png", ""},
                                   {"_a.png", ""},
                                   {"x&y z.png", ""},
                                   {"a.b c.png", ""}}) {
    EXPECT_EQ(AlternativeFrom(file), text) << file;
  }
}

// Whole files of each kind: cut at every byte that belongs to the picture each is cut short, with rubbish behind it
// none.
TEST(CutPicture, IsToldAtEveryByte) {
  using namespace std::string_literals;
  const std::string segment = "\xFF\xE1\0\x06\xFF\xD9\xFF\xD9"s;  // looks like the end, and is its content
  struct Case {
    const char* name;
    std::string whole;
    std::size_t told_from;  // so many bytes tell the kind
  };
  for (const Case& c : std::initializer_list<Case>{
           {"JPEG",
            "\xFF\xD8"s + segment +
                "\xFF\xFF\xDA\0\x04xxdata\xFF\0data\xFF\xD0more\xFF\xC4\0\x03z\xFF\xDA\0\x02q\xFF\xD9"s,
            3},
           {"PNG", "\x89PNG\r\n\x1A\n\0\0\0\x02IHDRxx1234\0\0\0\0IEND1234"s, 8},
           {"GIF", "GIF89a..............;"s, 4},
           {"WebP", "RIFF\x08\0\0\0WEBPVP8 "s, 8},
       }) {
    EXPECT_FALSE(IsCutShort(c.whole)) << c.name;
    EXPECT_FALSE(IsCutShort(c.whole + "\0\0"s)) << c.name;
    for (std::size_t length = c.told_from; length < c.whole.size(); ++length)
      EXPECT_TRUE(IsCutShort(c.whole.substr(0, length))) << c.name << " at " << length;
  }
  EXPECT_FALSE(IsCutShort("BM a bitmap says nothing"));
  EXPECT_FALSE(IsCutShort(""));
}

}  // namespace
}  // namespace quillcast::document
