#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>

#include "controls/edit.h"
#include "controls/handles.h"

namespace varnel::controls {

// A one-line search edit with a clear button beside it. The owner decides
// the look (placeholder text, colours, whether the button shows); the box
// reports focus changes, key releases and clearing. The clear button is a
// notifying static, so a click on it never takes the focus: the caret stays
// in the box, where the user goes on typing.
class SearchBox {
 public:
  struct Events {
    std::function<void()> enter, exit, cleared;
    std::function<void(unsigned key)> keyUp;
  };

  SearchBox() = default;
  ~SearchBox();
  SearchBox(const SearchBox&) = delete;
  SearchBox& operator=(const SearchBox&) = delete;

  void Create(HWND parent, int editId, int clearId, Events events);
  explicit operator bool() const { return static_cast<bool>(edit_); }
  HWND Handle() const { return edit_.Handle(); }
  HWND ClearHandle() const { return clear_.Handle(); }

  std::wstring Text() const { return edit_.Text(); }
  bool HasFocus() const { return GetFocus() == edit_.Handle(); }
  void Focus() { edit_.Focus(); }
  void SelectAll() { edit_.SelectAll(); }
  void SetFont(HFONT font);
  // The edit, with the square clear button at its right end.
  void Move(int x, int y, int width, int height);

  // `text` replaces the box's text unless null.
  void SetLook(const std::wstring* text, bool clearButton, std::uint32_t fontColour,
               std::uint32_t boxColour);

  // The parent's WM_COMMAND from either control; false for other senders.
  bool OnCommand(int id, int code);
  // The parent's WM_CTLCOLOREDIT: the brush for this box, null for others.
  HBRUSH Colour(HWND control, HDC dc) const;

 private:
  static LRESULT CALLBACK EditProc(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);

  Edit edit_;
  Window clear_;
  Events events_;
  std::uint32_t fontColour_ = 0;
  std::uint32_t boxColour_ = 0;
  UniqueBrush brush_;  // of boxColour_
};

}  // namespace varnel::controls
