// What the program was started with, at first and again: opened when the window is free.
#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

namespace quillcast::desktop {

struct Shell;

class OpenRequests final : public QObject {
  Q_OBJECT
 public:
  // `is_free` tells whether no dialog is open, no run goes on and no command is at work.
  OpenRequests(Shell& shell, std::function<bool()> is_free, QObject* parent);

  // The arguments of one start: absolute paths and "mailto:" addresses. There is one message at a time, so the first of
  // them is opened, and the status line names the others. What still waits by then is one of the others: opened after
  // each other, each would ask about the one before.
  void Add(const std::vector<std::string>& arguments);
  // To be called when the window may have become free, or is shown.
  void Resume();
  bool is_waiting() const { return opens_ || !waiting_.empty(); }  // or is being opened
  // What waits has a window of its own.
  bool HasWindow() const;

 signals:
  // What waited is opened, or could not be.
  void Opened();

 private:
  bool MayOpen() const;
  void OpenWaiting();
  void Wait(const std::vector<std::string>& arguments);
  void Open(const std::vector<std::string>& arguments);

  Shell& shell_;
  std::function<bool()> is_free_;
  std::vector<std::string> waiting_;  // the first is to be opened, the others are to be named
  std::vector<std::string> opening_;  // while opens_
  bool opens_ = false;
};

}  // namespace quillcast::desktop
