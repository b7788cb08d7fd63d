// The first lines of a file as they would be stored; above each field stands a list of what it is to be.
#pragma once

#include <QTableWidget>

#include "recipients/import/import_sample.h"

class QComboBox;

namespace quillcast::desktop {

class EmptyState;

class ImportSampleTable final : public QTableWidget {
  Q_OBJECT
 public:
  explicit ImportSampleTable(QWidget* parent);

  // The lines behind the line of the number `skip`, with the first and last character off where `quotes` is.
  void Show(const recipients::ImportSample& sample, bool quotes, std::int64_t skip);
  // `why` there is nothing to show.
  void Clear(const QString& why = {});
  // What the lists above the fields show; fields that nobody takes are dimmed.
  void ShowMapping(const recipients::ImportMapping& mapping);

 signals:
  // A list above a field was set: that field of the line is to be this field of a recipient, kFieldCount for none.
  void Chosen(int source, std::size_t field);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  QComboBox* HeadingOf(int column) const;
  void AddHeadings(int columns);
  void AddLine(const recipients::SampleLine& line, bool quotes);
  void Dim();

  EmptyState* empty_;
  recipients::ImportMapping mapping_;
};

}  // namespace quillcast::desktop
