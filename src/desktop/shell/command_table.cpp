#include "desktop/shell/command_table.h"

#include <algorithm>
#include <array>

namespace quillcast::desktop {
namespace {

using enum Action;

// The merge fields do not follow the order of the tags: Address1 and the additional fields came later.
constexpr auto kCommands = std::to_array<Command>({
    {1, kOpen},
    {2, kSave},
    {4, kPrint},
    {5, kProperties},
    {6, kExit},
    {7, kEdit, 5049},
    {8, kEdit, 5033},
    {9, kEdit, 5003},
    {10, kEdit, 5002},
    {11, kEdit, 5032},
    {12, kEdit, 5004},
    {13, kEdit, 5035},
    {14, kEdit, 5008},
    {15, kDateTime},
    {16, kTemplate},
    {17, kAddAttachment},
    {18, kDeleteAttachment},
    {19, kFont},
    {20, kBody},
    {21, kLine},
    {22, kTable},
    {23, kPicture},
    {24, kHyperlink},
    {25, kEdit, 5050},
    {26, kEdit, 5034},
    {27, kEdit, 5000},
    {28, kEdit, 5023},
    {29, kEdit, 5048},
    {30, kEdit, 5025},
    {31, kEdit, 5024},
    {32, kEdit, 5026},
    {33, kEdit, 5018},
    {34, kEdit, 5031},
    {35, kEdit, 5051},
    {36, kEdit, 5030},
    {37, kPreview},
    {38, kSend},
    {39, kAccount},
    {40, kGroups},
    {41, kHistory},
    {42, kSignature},
    {43, kImport},
    {44, kExport},
    {52, kThreads},
    {53, kDomainTools},
    {54, kExtraForm1},
    {55, kExtraForm2},
    {56, kExtraForm3},
    {57, kExtraForm4},
    {58, kExtraForm5},
    {59, kHelp},
    {60, kTutorial},
    {61, kTips},
    {63, kSupport},
    {64, kUpdate},
    {65, kHomePage},
    {66, kAbout},
    {67, kMergeField, 0, "MergeEmail"},
    {68, kMergeField, 0, "MergeTitle"},
    {69, kMergeField, 0, "MergeFirstName"},
    {70, kMergeField, 0, "MergeLastName"},
    {71, kMergeField, 0, "MergeCountry"},
    {72, kMergeField, 0, "MergeState"},
    {73, kMergeField, 0, "MergeCity"},
    {74, kMergeField, 0, "MergeAddress2"},
    {75, kMergeField, 0, "MergeZIPCode"},
    {76, kMergeField, 0, "MergePhone"},
    {77, kMergeField, 0, "MergeFax"},
    {78, kMergeField, 0, "MergeCompany"},
    {79, kMergeField, 0, "MergeJobTitle"},
    {80, kMergeField, 0, "MergeWebSite"},
    {83, kOpen},
    {84, kSave},
    {85, kPrint},
    {86, kProperties},
    {87, kEdit, 5049},
    {88, kEdit, 5033},
    {89, kEdit, 5003},
    {90, kEdit, 5002},
    {91, kEdit, 5032},
    {92, kEdit, 5004},
    {93, kEdit, 5008},
    {94, kEdit, 5000},
    {95, kEdit, 5023},
    {96, kEdit, 5048},
    {97, kEdit, 5025},
    {98, kEdit, 5024},
    {99, kEdit, 5026},
    {100, kEdit, 5031},
    {101, kEdit, 5018},
    {102, kEdit, 5051},
    {103, kEdit, 5030},
    {104, kMergeField, 0, "MergeAddress1"},
    {105, kMergeField, 0, "MergeAdditional1"},
    {106, kMergeField, 0, "MergeAdditional2"},
    {107, kMergeField, 0, "MergeAdditional3"},
});
static_assert(std::is_sorted(kCommands.begin(), kCommands.end(),
                             [](const Command& a, const Command& b) { return a.identifier < b.identifier; }));

}  // namespace

std::span<const Command> Commands() { return kCommands; }

std::optional<Command> FindCommand(int identifier) {
  const auto* const row = std::lower_bound(kCommands.begin(), kCommands.end(), identifier,
                                           [](const Command& c, int id) { return c.identifier < id; });
  if (row == kCommands.end() || row->identifier != identifier) return {};
  return *row;
}

}  // namespace quillcast::desktop
