// The dialog in which a picture is asked for: its file, what it shows, and how large it stands in the message.
#pragma once

#include <QDialog>
#include <filesystem>
#include <optional>

#include "desktop/document/editor_state.h"
#include "desktop/document/picture_file.h"
#include "desktop/widgets/background_task.h"
#include "platform/prompts.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class StatusLine;

// OK closes it once the picture's copy lies in the folder. Files are looked at and copied beside the window.
class PictureForm final : public QDialog {
  Q_OBJECT
 public:
  // A new picture gets at most so many pixels of width as its place has `room` for, 0 where that is not known.
  PictureForm(platform::Prompts& prompts, std::filesystem::path folder, int room, QWidget* parent);

  // To be changed; another file may take its place.
  void Show(const PlacedPicture& placed);
  // As if it had been picked.
  void Take(const std::filesystem::path& file);

  // After OK.
  QString Html() const;

 public slots:
  void accept() override;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void MakeWindow();
  void ConnectControls();
  void PickFile();
  void Taken(const std::filesystem::path& file, const Result<PictureLook>& look);
  void ShowPreview(const std::filesystem::path& file);
  void ShowPreview(const QImage& picture);
  void ShowSmaller();
  void ShowSize(profile::PixelSize size);
  // The other side after one was typed; both, where the other would be too long.
  void Follow(QLineEdit* typed);
  document::PictureChoice Choice() const;
  void Kept(const Result<std::filesystem::path>& copy);
  void SetBusy(bool busy);
  void TellUndescribed();

  platform::Prompts& prompts_;
  std::filesystem::path folder_;
  int room_;
  QString address_;  // of what is placed already, or of the copy
  profile::PixelSize natural_;
  std::optional<PictureLook> look_;  // of a new file
  QLineEdit* file_;
  QPushButton* browse_;
  QLabel* shown_;
  QCheckBox* smaller_;
  QLineEdit* alternative_;
  QLineEdit* width_;
  QLineEdit* height_;
  StatusLine* undescribed_ = nullptr;  // where there is no alternative text
  QCheckBox* ratio_;
  QLineEdit* border_;
  QComboBox* align_;
  StatusLine* status_;
  QPushButton* ok_ = nullptr;
  BackgroundTask task_{this};  // the last: it ends before what it fills goes
};

}  // namespace quillcast::desktop
