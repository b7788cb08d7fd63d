// The picture that a person asks for, as a piece of HTML.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"
#include "profile/min_win_size.h"

namespace quillcast::document {

// How it stands to the text. At the left or the right the text flows round it.
inline constexpr std::array<const char*, 3> kPictureAlignments = {"Left", "Right", "Middle"};

// What was typed and chosen; its sides and its border in pixels.
struct PictureChoice {
  std::string alternative = {};  // what it shows, for whoever does not see it
  std::string width = {};
  std::string height = {};
  std::string border = "0";
  std::string align = {};  // one of the above, or empty: as a letter in the line

  bool operator==(const PictureChoice&) const = default;
};

// What the name of a file says of a picture that nobody was asked about: its words, where it is more than one and
// nothing else, as "our-new-shop.png"; else nothing, for "IMG_2034.jpg" read out tells nobody anything.
std::string AlternativeFrom(const std::filesystem::path& file);

// What is checked.
enum class PictureBox { kWidth, kHeight, kBorder };

// The first thing that is wrong: sides from 1 to 9,999, a border from 0 to 99. A picture for decoration has no
// alternative text.
std::optional<Complaint<PictureBox>> CheckPicture(const PictureChoice& choice);

// Of a choice that passed the check. `address` is where it lies; `natural` its own size, whose ratio it keeps on a
// screen that is too narrow for it.
std::string PictureHtml(std::string_view address, const PictureChoice& choice, profile::PixelSize natural);

}  // namespace quillcast::document
