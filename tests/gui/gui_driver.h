#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// Starts VarnelUninstaller.exe and reads and drives its windows from outside,
// as a user's tools would: by window messages, with the list view's texts
// read through a buffer in the program's own memory.
namespace varnel::guitest {

// Waits until `done` holds, asking again whenever a message or `interval`
// passes; false after `limit`.
bool WaitUntil(const std::function<bool()>& done,
               std::chrono::milliseconds limit = std::chrono::seconds(30));

// Real key strokes through the system's input queue: they reach whichever
// window has the keyboard focus, with `modifiers` held down around the key.
void PressKey(WORD key, std::initializer_list<WORD> modifiers = {});
// Lower-case letters, digits and spaces, one stroke each.
void TypeLetters(std::wstring_view letters);

class Program {
 public:
  Program() = default;
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Starts the program with `args`; false when it cannot be started.
  bool Start(const std::wstring& exe, const std::wstring& args = L"");
  // Waits for the main window and its first filled, painted list.
  bool WaitForList(int rows);
  // WM_CLOSE to the main window, then waits for the exit; the exit code.
  int Close();
  // Brings the main window to the front, so that key strokes go to it.
  bool Activate();
  // The window with the keyboard focus in the program's window thread.
  HWND Focus() const;
  DWORD Pid() const { return pid_; }
  HANDLE Process() const { return process_; }

  HWND Main() const { return main_; }
  HWND Control(int id) const { return GetDlgItem(main_, id); }
  HWND List() const { return Control(1020); }

  int RowCount() const { return RowCountOf(List()); }
  std::wstring Cell(int row, int column) const { return CellOf(List(), row, column); }
  // The same for any list view of the program.
  int RowCountOf(HWND list) const;
  std::wstring CellOf(HWND list, int row, int column) const;
  void SetRowChecked(int row, bool on);
  int GroupOf(int row) const;
  std::wstring ColumnText(int column) const;
  // HDF_SORTUP, HDF_SORTDOWN or 0.
  int SortArrow(int column) const;
  void SelectRow(int row) { SelectRowOf(List(), row); }
  void SelectRowOf(HWND list, int row);
  int SelectedRow() const;
  void ClickColumn(int column);
  // The captions of every row, in list order.
  std::vector<std::wstring> Captions() const;
  // The inventory index the main window keeps with a row (-1 for none), and
  // back.
  int RecordOf(int row) const;
  int RowOfRecord(int record) const;
  // The height of the main list's first row; 0 without rows.
  int RowHeight() const;
  // WM_DPICHANGED to the main window, as on a move to a monitor of `dpi`.
  void ChangeDpi(UINT dpi);

  // WM_COMMAND to the main window, sent (returns after it ran) or posted.
  void Command(int id, bool post = false);
  // A top-level dialog owned by `owner`, the main window when null (message
  // box, file dialog).
  HWND WaitForDialog(HWND owner = nullptr);
  // The same without waiting; null when there is none.
  HWND DialogOwnedBy(HWND owner) const;
  // A top-level window of this process with the class.
  HWND FindOwnWindow(const wchar_t* className) const;

 private:
  // Copies `local` into the program, lets `send` use it there and copies it
  // back. `textField`, when given, is pointed at a text buffer placed behind
  // the copy, whose text lands in `text`.
  bool Remote(void* local, std::size_t size, const std::function<void(void*)>& send,
              LPWSTR* textField = nullptr, std::wstring* text = nullptr) const;

  HANDLE process_ = nullptr;
  DWORD pid_ = 0;
  HWND main_ = nullptr;
};

std::wstring WindowText(HWND window);

}  // namespace varnel::guitest
