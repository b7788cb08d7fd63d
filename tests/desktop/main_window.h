// The main window under test, with what the person sees of it.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QTest>
#include <memory>

#include "desktop/document/html_editor.h"
#include "desktop/form_rig.h"
#include "desktop/shell/main_form.h"

namespace quillcast::desktop {

struct Scene {
  test::FormRig rig;
  std::unique_ptr<MainForm> window;

  void Open() {
    window = std::make_unique<MainForm>(rig.program);
    window->Load();
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
  }
  template <typename Widget>
  Widget& Find(const char* name) const {
    return *window->findChild<Widget*>(name);
  }
  HtmlEditor& Editor() const { return Find<HtmlEditor>("Editor"); }
  QString Box(const char* name) const { return Find<QComboBox>(name).currentText(); }
  // The control that has the keys, by its name.
  QString Focus() const {
    QWidget* focused = window->focusWidget();
    if (focused == nullptr) return {};
    return Editor().isAncestorOf(focused) ? "Editor" : focused->objectName();
  }
  QString Notice() const {
    auto* bar = window->findChild<QWidget*>("NoticeBar");
    return bar->isVisible() ? bar->findChild<QLabel*>()->text() : QString();
  }
  QString Status() const { return Find<QLabel>("StatusPanel1").text(); }
};

struct OpenScene : Scene {
  OpenScene() { Open(); }
};

}  // namespace quillcast::desktop
