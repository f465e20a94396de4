#pragma once

#include <windows.h>

namespace varnel::win32 {

// A 32-bit device-independent bitmap with its first row on top.
inline BITMAPINFO TopDown32(int width, int height) {
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = -height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  return info;
}

}  // namespace varnel::win32
