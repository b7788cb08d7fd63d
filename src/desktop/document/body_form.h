// The dialog in which the colours and the background of the page are chosen.
#pragma once

#include <QDialog>
#include <filesystem>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "document/body_colours.h"
#include "platform/prompts.h"
#include "platform/result.h"

class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class StatusLine;

// OK closes it only when document::CheckBodyColours has nothing against the choice, and a picture that was picked has
// been copied into the folder.
class BodyForm final : public QDialog {
  Q_OBJECT
 public:
  // `found` is what the page has.
  BodyForm(platform::Prompts& prompts, std::filesystem::path pictures, document::BodyColours found, QWidget* parent);

  // As it stands in the boxes; after OK it has passed the check.
  document::BodyColours Choice() const;

 public slots:
  void accept() override;

 private:
  void BuildWindow();
  void PickColour(std::size_t row);
  // None for what OK refuses.
  void ShowSample(std::size_t row);
  void SayWhatIsWanted();
  void PickPicture();
  void Kept(const Result<std::filesystem::path>& copy);
  void SetPicture(const std::string& address);
  void SetBusy(bool busy);

  platform::Prompts& prompts_;
  std::filesystem::path folder_;
  document::BodyColours found_;
  std::string picture_;  // its address
  std::vector<QLineEdit*> colours_;
  std::vector<QPushButton*> samples_;
  QLineEdit* shown_picture_;
  QPushButton* browse_;
  QPushButton* none_;
  StatusLine* status_;
  QPushButton* ok_ = nullptr;
  BackgroundTask task_{this};
};

}  // namespace quillcast::desktop
