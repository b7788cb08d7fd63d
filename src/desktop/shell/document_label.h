// What the message in the editor is called, and whether it is saved: beside the menus, beneath the window's title.
#pragma once

#include <QLabel>
#include <filesystem>

namespace quillcast::desktop {

class DocumentLabel final : public QLabel {
  Q_OBJECT
 public:
  explicit DocumentLabel(QWidget* parent);

  // Empty for a document without a file.
  void ShowName(const std::filesystem::path& file);
  void ShowChanged(bool is_changed);

  // As high as the menus beside it.
  QSize sizeHint() const override;

 private:
  void Refresh();

  std::filesystem::path file_;
  bool is_changed_ = false;
};

}  // namespace quillcast::desktop
