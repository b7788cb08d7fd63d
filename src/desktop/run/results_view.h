// Who got the message, who did not and why: a list to filter, copy and save.
#pragma once

#include <QAbstractTableModel>
#include <QWidget>
#include <vector>

#include "platform/prompts.h"
#include "run/run_results.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTableView;

namespace quillcast::desktop {

// The rows of the results that pass the filter.
class ResultsModel final : public QAbstractTableModel {
  Q_OBJECT
 public:
  ResultsModel(const run::RunResults& results, QObject* parent) : QAbstractTableModel(parent), results_(results) {}

  void SetFilter(run::RunResults::Filter filter);
  // Takes in the results that came since.
  void Grow();
  const std::vector<std::uint32_t>& rows() const { return rows_; }

  int rowCount(const QModelIndex& parent) const override;
  int columnCount(const QModelIndex&) const override { return 4; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const run::RunResults& results_;
  run::RunResults::Filter filter_;
  std::vector<std::uint32_t> rows_;
  std::size_t seen_ = 0;  // of the results
};

class ResultsView final : public QWidget {
  Q_OBJECT
 public:
  ResultsView(const run::RunResults& results, platform::Prompts& prompts, QWidget* parent);
  void Grow();

 private:
  void Filter();
  void ShowCount();
  void Copy();
  void Save();

  const run::RunResults& results_;
  platform::Prompts& prompts_;
  ResultsModel* model_;
  QComboBox* states_;
  QLineEdit* text_;
  QTableView* table_;
  QLabel* count_;
};

}  // namespace quillcast::desktop
