#include "help/tutorial.h"

namespace quillcast::help {
namespace {

struct Person {
  const char* address;
  const char* first_name;
  const char* city;
};

constexpr std::size_t kCity = 6;  // in recipients::kFields

constexpr std::array<Person, 3> kInvented = {{{"ada@example.org", "Ada", "London"},
                                              {"grace@example.net", "Grace", "New York"},
                                              {"hedy@example.com", "Hedy", "Vienna"}}};

}  // namespace

const TutorialLetter kTutorialLetter = {
    "Hello $*MergeFirstName*$",
    "<html><head><title>Hello</title></head><body><p>Dear $*MergeFirstName*$,</p><p>this is my first letter with "
    "Quillcast. Three people get it, and each of them reads their own name above it.</p><p>How is "
    "$*MergeCity*$?</p><p>Yours truly</p></body></html>"};

const std::array<TutorialPage, 8> kTutorialPages = {{
    {TutorialStep::kWelcome, "Welcome",
     "In ten minutes you will have sent your first mailing: one letter to three people, with each one's own name in "
     "it. "
     "Nothing leaves your computer.\n\nEach page says what to do. Do it yourself in the main window, which stays open "
     "to you, or press the button, and it is done for you.",
     nullptr},
    {TutorialStep::kPractice, "1. A mailbox to practise on",
     "Quillcast brings a mail server of its own along. It takes every letter, sends none of them on, and shows you "
     "what "
     "arrived. While practice is on, a line above the letter says so.",
     "Switch Practice &On"},
    {TutorialStep::kGroup, "2. A group of recipients",
     "A letter goes to a group. In the main window, Groups beside To opens the group manager: New Group makes one, and "
     "Add puts people in, each with an address, a first name and whatever else you know of them.\n\nThen choose the "
     "group in To. Here it is called Tutorial, and has three people in it who do not exist.",
     "&Make the Group"},
    {TutorialStep::kLetter, "3. The letter",
     "Write a subject and a few lines. Where each recipient should read something of their own, choose it from Merge "
     "tag in the toolbar: $*MergeFirstName*$ stands for the first name, in the subject too.\n\nWhat stands in the "
     "window now is kept, and offered to you again.",
     "&Write the Letter"},
    {TutorialStep::kPreview, "4. Look before you send",
     "Preview (F5) shows the letter as each recipient will see it. Go from one to the next: Ada, Grace, Hedy. The list "
     "below it says what you may have missed, such as a recipient without a first name.",
     "Open the &Preview"},
    {TutorialStep::kSend, "5. Send",
     "Send (Ctrl+Return) opens a window that says to whom the letter goes, and over which server; press Send there "
     "once "
     "more. The report says of each recipient what became of the letter, and the history keeps it.",
     "Open the &Sending Window"},
    {TutorialStep::kArrived, "6. What arrived",
     "The practice mailbox has your letters now, one for each recipient. Look at two of them: they were written once, "
     "and greet two people.",
     "Show What A&rrived"},
    {TutorialStep::kReal, "7. For real",
     "End practice, and fill in your own account: Tools, Mail Account. Test there tries it without sending anything. "
     "Then make a group of yourself and a friend, and begin small.\n\nThe group Tutorial can be deleted in the group "
     "manager. F1 has the help for whichever window you are in.",
     "&End Practice"},
}};

Result<void> MakeTutorialGroup(recipients::RecipientStore& store) {
  const auto made = store.CreateGroupIfFree(kTutorialGroup);
  if (!made) return made.error();
  const auto group = store.RequireGroup(kTutorialGroup);
  if (!group) return group.error();
  for (const Person& person : kInvented) {
    recipients::Recipient recipient;
    recipient.values[recipients::kEmail] = person.address;
    recipient.values[recipients::kFirstName] = person.first_name;
    recipient.values[kCity] = person.city;
    const auto added = store.AddRecipientIfNew(group->id, recipient);
    if (!added) return added.error();
  }
  return {};
}

Result<void> MayPractise(bool is_filled_in, bool serves) {
  if (!is_filled_in || serves) return {};
  return Error{
      Failure::kNotPermitted, "There is a mail account already, and practice would take its place, so it stays off.",
      "Read on, and look at the preview. To practise, start Quillcast with a profile of its own; the help says how, "
      "under Files and folders."};
}

}  // namespace quillcast::help
