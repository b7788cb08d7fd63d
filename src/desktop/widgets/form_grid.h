// The rows of a dialog: a label and its field in each. The fields of a window begin in one line, whichever boxes and
// pages of tabs their grids stand in; a label leads to its field, and the Tab key follows the rows.
//
//   NameForm::NameForm(QWidget* parent) : QDialog(parent) {
//     auto* column = new FormColumn(this);
//     FormGrid* who = column->AddBox(tr("Who"));
//     name_ = who->Add("NameTextBox", tr("&Name:"), new QLineEdit());
//     age_ = who->Add("AgeTextBox", tr("&Age:"), new QLineEdit(), {new QLabel(tr("years"))});
//     news_ = who->AddPlain("NewsCheckBox", new QCheckBox(tr("Wants to hear n&ews")));
//     status_ = column->Add(new StatusLine(this));
//     column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
//   }
//
// What is made without a parent belongs to the grid once it is added.
#pragma once

#include <QWidget>
#include <vector>

class QGridLayout;
class QLabel;

namespace quillcast::desktop {

class FormGrid final : public QWidget {
  Q_OBJECT
 public:
  // Grids that stand side by side have a `place` each: those of one place begin their fields in one line.
  explicit FormGrid(QWidget* parent, int place = 0);

  // A row. The label leads to the field, names it for a screen reader, and is dimmed and hidden with it. What stands
  // `beside` the field (a unit, arrows, a button) keeps its own width, and so does a field that has a widest one;
  // others take the row. Of a field that is made of several controls, the name and the label are those of its focus
  // proxy.
  template <typename Field>
  Field* Add(const QString& name, const QString& label, Field* field, const std::vector<QWidget*>& beside = {}) {
    return AddRow(name, label, field, beside), field;
  }
  // A row without a label, such as a check box: it begins where the fields do.
  template <typename Field>
  Field* AddPlain(const QString& name, Field* field) {
    return AddUnlabelled(name, field, 1), field;
  }
  // A row that begins where the labels do, such as a radio button above the fields that belong to it.
  template <typename Field>
  Field* AddWide(const QString& name, Field* field) {
    return AddUnlabelled(name, field, 0), field;
  }
  // At the end of the row of a field that has nothing beside it: the buttons of several rows stand below each other.
  // The Tab key comes to it after all that were added before.
  void AddButton(QWidget* field, QWidget* button);
  // The labels after this stand in by so many pixels; their fields do not.
  void Indent(int pixels) { indent_ = pixels; }
  int place() const { return place_; }

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void AddRow(const QString& name, const QString& label, QWidget* field, const std::vector<QWidget*>& beside);
  void AddUnlabelled(const QString& name, QWidget* field, int column);
  QLabel* MakeLabel(const QString& text, QWidget* field);
  int Inset() const;
  int LabelsEnd() const;
  void Align() const;

  int place_;
  int indent_ = 0;
  QGridLayout* rows_;
  std::vector<QLabel*> labels_;
};

}  // namespace quillcast::desktop
