// The import's dialog under test, with a person who picks files, steps through lists and presses buttons.
#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <memory>

#include "desktop/form_rig.h"
#include "desktop/recipients/recipient_import_form.h"

namespace quillcast::desktop {

inline const QString kConsent =
    "consent: To comply with the CAN-SPAM please confirm that you are importing a valid opt-in list./You must not "
    "import "
    "lists of purchased addresses which don't have given permission.";
inline constexpr const char* kCancelQuestion = "ask: Are you sure you want to cancel the import process?";

inline QString Done(int added, int duplicates, int ignored) {
  return QString(
             "inform: %1 recipients imported successfully./%2 duplicate recipients ignored./%3 invalid recipients "
             "ignored.")
      .arg(added)
      .arg(duplicates)
      .arg(ignored);
}

struct ImportScene {
  test::FormRig rig;
  std::unique_ptr<RecipientImportForm> form;

  ImportScene() = default;
  explicit ImportScene(std::string_view content) { OpenWith(content); }
  void Open(const QString& group = {}) {
    form = std::make_unique<RecipientImportForm>(rig.program, group, nullptr);
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form.get()));
  }
  // With a group, and a file that is browsed for.
  void OpenWith(std::string_view content) {
    rig.AddGroup("Readers", {"old@x.org"});
    Open("Readers");
    Pick(content);
  }
  void Pick(std::string_view content, const char* name = "list.txt") {
    PickFile(rig.folder.Write(name, content));
    QTRY_VERIFY(!Status().isEmpty());
  }
  void PickFile(const std::filesystem::path& file) {
    rig.prompts.files = {file};
    Press("BrowseButton");
    QCOMPARE(rig.Shown(), "open: Import Recipients");
  }
  // What the lists of the address, the first name and the city show.
  QString Mapped() const {
    QStringList chosen;
    for (const char* name : {"ComboBox1", "ComboBox3", "ComboBox7"}) chosen << Find<QComboBox>(name).currentText();
    return chosen.join('|');
  }
  // What the dialog that keeps a mapping says of that name.
  QString TypeMappingName(const QString& name) {
    QString said;
    test::WhileOpen("MappingKeepForm", [&said, name](QDialog& dialog) {
      QTest::keyClicks(dialog.focusWidget(), name);
      QTest::keyClick(&dialog, Qt::Key_Return);
      const auto& line = *dialog.findChild<QLabel*>("StatusLine");
      QCoreApplication::processEvents();
      said = line.height() < line.heightForWidth(line.width()) ? "cut: " + line.text() : line.text();
    });
    QTest::keyClick(&Find<QWidget>("KeepMappingButton"), Qt::Key_Space);
    return said;
  }
  recipients::KeptMapping Keep(const QString& name) {
    TypeMappingName(name);
    return recipients::FindMapping(rig.settings, FromQt(name)).ValueOr({});
  }
  template <typename Widget>
  Widget& Find(const QString& name) const {
    return *form->findChild<Widget*>(name);
  }
  void Press(const char* name) const { QTest::mouseClick(&Find<QAbstractButton>(name), Qt::LeftButton, {}, {5, 5}); }
  // Steps through a list as the keyboard does.
  void Step(const QString& name, int entries) const {
    Find<QComboBox>(name).setFocus();
    const Qt::Key key = entries < 0 ? Qt::Key_Up : Qt::Key_Down;
    for (int n = 0; n < std::abs(entries); ++n) QTest::keyClick(&Find<QComboBox>(name), key);
  }
  void GetData() {
    Press("GetDataButton");
    QTRY_VERIFY(Find<QComboBox>("ComboBox1").count() > 0);
  }
  // Into the box of the columns, and leaves it, with which a look begins.
  void TypeColumns(const char* columns) const {
    auto& box = Find<QLineEdit>("ColumnsTextBox");
    box.setFocus();
    box.selectAll();
    QTest::keyClicks(&box, columns);
    QTest::keyClick(&box, Qt::Key_Tab);
  }
  // Presses the button; a look that is under way comes to its end first.
  void PressImport() {
    rig.prompts.answers = {platform::Answer::kYes};
    Press("ImportButton");
    QTRY_VERIFY(!rig.prompts.shown.empty());
  }
  QString Import() {
    PressImport();
    if (!QTest::qWaitFor([this] { return Find<QPushButton>("ImportButton").isEnabled(); })) return "does not end";
    return rig.Shown();
  }
  QString Entries(const QString& name) const {
    QStringList entries;
    for (int i = 0; i < Find<QComboBox>(name).count(); ++i) entries << Find<QComboBox>(name).itemText(i);
    return entries.join('|');
  }
  // What the table shows below its lists, a row each.
  QString Sample() const {
    auto& table = Find<QTableWidget>("SampleTable");
    QStringList rows;
    for (int row = 1; row < table.rowCount(); ++row) {
      QStringList cells;
      for (int column = 0; column < table.columnCount(); ++column) cells << table.item(row, column)->text();
      rows << cells.join('|');
    }
    return rows.join(" / ");
  }
  QString Status() const { return Find<QLabel>("StatusLine").text(); }
  QString Warnings() const {
    return Find<QWidget>("WarningsPanel").isVisible() ? Find<QLabel>("WarningsLabel").text() : QString();
  }
  QString Addresses() const {
    auto cursor = rig.Store().ListRecipients(rig.Store().RequireGroup("Readers")->id, "");
    recipients::Recipient recipient;
    QStringList all;
    while (*cursor->Next(recipient)) all << ToQt(recipient.email() + "," + recipient.values[recipients::kFirstName]);
    return all.join(' ');
  }
};

}  // namespace quillcast::desktop
