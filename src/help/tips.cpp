#include "help/tips.h"

#include <array>
#include <string>

#include "platform/text.h"

namespace quillcast::help {
namespace {

constexpr const char* kSection = "Options";
constexpr const char* kMessage = "Message Options.htm";
constexpr const char* kGroups = "Group Manager 1.htm";
constexpr const char* kSending = "Sending.htm";

using Series = std::array<Tip, kTipsInSeries>;

constexpr std::array<const char*, kTipSeries> kNames = {"Writing", "People", "Sending"};

constexpr Series kWriting = {{
    {"Merge tags make each message personal: put the caret where a name belongs and choose First Name from “Merge tag” "
     "in the toolbar. Tags work in the subject too.",
     "Merge Tags.htm"},
    {"Begin with a letter that is there already: Insert, Template has five designs, and keeps letters of your own to "
     "begin others from.",
     kMessage},
    {"Drop a picture on the letter, or paste it. A photograph that is too large for a mail is offered smaller, and a "
     "click on it shows the handles that size it.",
     kMessage},
    {"Ctrl+K makes a link of what is selected. Type example.org: https:// is put before it, and below the box stands "
     "where it leads.",
     kMessage},
    {"Nothing that you write is lost: it is kept a second after each change, and a line above the letter offers it the "
     "next time.",
     kMessage},
    {"Ctrl+Shift+V pastes the words alone, without the fonts and colours that they had elsewhere.", kMessage},
    {"In a table the Tab key goes to the next cell, and behind the last one into a new row. Format, Rows and Columns "
     "has "
     "the rest.",
     kMessage},
    {"File, Properties counts the words, lists every link and picture, and says what would hurt the mailing: a link "
     "that "
     "leads nowhere, a picture without words for those who do not see it.",
     kMessage},
    {"A signature stands below each new message once it is switched on: Tools, Signature. Few lines make a good one.",
     "Signature Manager.htm"},
    {"Text too small? Ctrl with plus and minus shows the letter larger or smaller, and Ctrl+0 as it was. What is sent "
     "stays as it is.",
     kMessage},
}};

constexpr Series kPeople = {{
    {"Take a whole list in at once: Tools, Import Recipients reads spreadsheets, delimited texts and address books, "
     "and "
     "maps the fields by their headings.",
     "Group Manager 2.htm"},
    {"Does the same list come every month? Keep As in the import keeps how its fields are mapped, for the next one.",
     "Group Manager 2.htm"},
    {"In a long group, type the beginning of a name or an address to go there.", kGroups},
    {"Sort By in the group manager keeps an order with the group. It is shown, exported and sent to in that order.",
     kGroups},
    {"Nobody likes a letter twice: Duplicates lists who stands in a group, or in all groups, more than once.", kGroups},
    {"“DUPONT-LEROY” looks loud in a greeting. Capitalize writes names as names are, and shows you first what changes.",
     kGroups},
    {"Deleted too many? Undo in the group manager takes back the last change of several recipients, on another day "
     "too.",
     kGroups},
    {"Where Else shows in which other groups somebody is: for those who want no more letters at all.", kGroups},
    {"In the search “%” stands for any text and “_” for one character: A%son finds Anderson and Allison.", kGroups},
    {"Exporting for a spreadsheet? Tick Headings, and quotes where they are needed, and choose Comma: every "
     "spreadsheet "
     "reads that.",
     "Group Manager 3.htm"},
}};

constexpr Series kSendingTips = {{
    {"Look before you send: Preview shows the message as any of your recipients will see it, says what may be missing, "
     "and sends one copy to yourself.",
     kSending},
    {"Every run keeps its report and its first message. History shows who got what, and when, long after the window is "
     "closed.",
     "History Manager.htm"},
    {"Try everything without sending anything: Help, Tutorial sends to a mailbox on this machine, and shows you what "
     "arrived.",
     "First Mailing.htm"},
    {"Send to the first ten only, and look how it goes: tick Only a part of the list in the sending window, and send "
     "to "
     "the others afterwards.",
     kSending},
    {"Test in the mail account connects, signs in and leaves, with what stands on the screen. Nothing is sent.",
     "Email Manager 1.htm"},
    {"Letters that land among the junk often come from a domain that does not say who may send for it. Tools, Domain "
     "Tools, Check Sender tells what to put right.",
     "Extra Tools 1.htm"},
    {"“Unknown” in a report means that the message went out whole and no answer came. It may have arrived, so it is "
     "never "
     "sent again by itself.",
     kSending},
    {"Cancel stops a run after the message that is under way. Who was not reached stands as “not tried”, so that you "
     "can "
     "send to them later.",
     kSending},
    {"A large mailing may go on overnight: tick the box in the sending window that shuts the computer down when it is "
     "done.",
     kSending},
    {"All of this can be had by command, for a list that goes out every Monday: quillcast send. The help has a page on "
     "it.",
     "Command Line.htm"},
}};

constexpr std::array<const Series*, kTipSeries> kSeries = {&kWriting, &kPeople, &kSendingTips};

int Stored(const profile::SettingsStore& settings, const char* key, int last) {
  const std::string stored = IgnoreErrors(settings.Read(kSection, key, ""), "");  // the first tip is as good as any
  return static_cast<int>(platform::WholeNumberBetween(stored, 1, last).value_or(1));
}

TipPlace PlaceOf(int number) { return {(number - 1) % kTipSeries + 1, (number - 1) / kTipSeries + 1}; }

}  // namespace

const Tip& TipAt(TipPlace place) {
  return (*kSeries.at(static_cast<std::size_t>(place.series) - 1)).at(static_cast<std::size_t>(place.place) - 1);
}

const char* SeriesName(int series) { return kNames.at(static_cast<std::size_t>(series) - 1); }

int NumberOf(TipPlace place) { return (place.place - 1) * kTipSeries + place.series; }

TipPlace NextTip(TipPlace place) { return PlaceOf(NumberOf(place) % (kTipSeries * kTipsInSeries) + 1); }

TipPlace TipBefore(TipPlace place) {
  const int number = NumberOf(place);
  return PlaceOf(number == 1 ? kTipSeries * kTipsInSeries : number - 1);
}

TipPlace FirstTip(const profile::SettingsStore& settings) {
  return {Stored(settings, "FirstTip", kTipSeries), Stored(settings, "TipPlace", kTipsInSeries)};
}

Result<void> KeepFirstTip(profile::SettingsStore& settings, TipPlace place) {
  const std::string series = std::to_string(place.series);
  const std::string in_series = std::to_string(place.place);
  const std::array<profile::SettingValue, 2> values = {{{"FirstTip", series}, {"TipPlace", in_series}}};
  return settings.WriteAll(kSection, values);
}

}  // namespace quillcast::help
