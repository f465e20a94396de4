#include "platform/win32/win32_shell.h"

#include <windows.h>

#include <shellapi.h>

#include <cstring>

#include "platform/win32/top_down_bitmap.h"
#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

const wchar_t* OrNull(const std::optional<std::wstring>& text) {
  return text->empty() ? nullptr : text->c_str();
}

IconHandle OwnIcon(HICON icon) {
  return icon ? IconHandle(icon, [](void* h) { DestroyIcon(static_cast<HICON>(h)); }) : nullptr;
}

// Icon bits: width and height (16 bits each, little-endian), then the
// pixels top-down as 32-bit BGRA with straight alpha.
constexpr int kLargestIconSide = 256;
constexpr std::size_t kBitsHeader = 4;

bool ReadPixels(HDC dc, HBITMAP bitmap, int width, int height, std::uint8_t* out) {
  BITMAPINFO info = TopDown32(width, height);
  return GetDIBits(dc, bitmap, 0, static_cast<UINT>(height), out, &info, DIB_RGB_COLORS) ==
         height;
}

}  // namespace

std::intptr_t Win32Shell::Execute(std::wstring_view verb, std::wstring_view file,
                                  std::wstring_view parameters, std::wstring_view directory,
                                  int show) {
  auto apiVerb = ApiString(verb);
  auto apiFile = ApiString(file);
  auto apiParameters = ApiString(parameters);
  auto apiDirectory = ApiString(directory);
  if (!apiVerb || !apiFile || !apiParameters || !apiDirectory || apiFile->empty()) {
    return SE_ERR_FNF;
  }
  ComScope com;  // the shell may hand the verb to a COM handler
  HINSTANCE result = ShellExecuteW(nullptr, OrNull(apiVerb), apiFile->c_str(),
                                   OrNull(apiParameters), OrNull(apiDirectory), show);
  return reinterpret_cast<std::intptr_t>(result);
}

bool Win32Shell::ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) {
  auto apiVerb = ApiString(verb);
  auto apiFile = ApiString(file);
  if (!apiVerb || !apiFile || apiFile->empty()) return false;
  ComScope com;
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  // No error dialogs: nobody may be there to close them, and the wait below
  // has no time-out.
  info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
  info.lpVerb = OrNull(apiVerb);
  info.lpFile = apiFile->c_str();
  info.nShow = show;
  if (!ShellExecuteExW(&info)) return false;
  // No process when the shell handed the request to one already running.
  UniqueHandle process(info.hProcess);
  if (process) WaitForInputIdle(process.get(), INFINITE);
  return true;
}

bool Win32Shell::ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                              IconHandle& large) {
  small.reset();
  large.reset();
  auto apiFile = ApiString(file);
  if (!apiFile || apiFile->empty()) return false;
  HICON bigIcon = nullptr;
  HICON smallIcon = nullptr;
  if (ExtractIconExW(apiFile->c_str(), index, &bigIcon, &smallIcon, 1) == UINT_MAX) return false;
  small = OwnIcon(smallIcon);
  large = OwnIcon(bigIcon);
  if (small && large) return true;
  small.reset();
  large.reset();
  return false;
}

std::vector<std::uint8_t> Win32Shell::IconBits(const IconHandle& icon) {
  if (!icon) return {};
  ICONINFO parts{};
  if (!GetIconInfo(static_cast<HICON>(icon.get()), &parts)) return {};
  const UniqueBitmap color(parts.hbmColor), mask(parts.hbmMask);
  BITMAP shape{};
  // A monochrome icon has no colour bitmap; none is kept.
  if (!color || !GetObjectW(color.get(), sizeof shape, &shape)) return {};
  const int width = shape.bmWidth, height = shape.bmHeight;
  if (width <= 0 || height <= 0 || width > kLargestIconSide || height > kLargestIconSide) return {};
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  std::vector<std::uint8_t> bits(kBitsHeader + 4 * count);
  bits[0] = static_cast<std::uint8_t>(width);
  bits[1] = static_cast<std::uint8_t>(width >> 8);
  bits[2] = static_cast<std::uint8_t>(height);
  bits[3] = static_cast<std::uint8_t>(height >> 8);
  std::uint8_t* pixels = bits.data() + kBitsHeader;
  const UniqueDc dc(CreateCompatibleDC(nullptr));
  if (!dc || !ReadPixels(dc.get(), color.get(), width, height, pixels)) return {};
  bool hasAlpha = false;
  for (std::size_t i = 0; i < count && !hasAlpha; ++i) hasAlpha = pixels[4 * i + 3] != 0;
  if (!hasAlpha) {
    // An older icon: its mask says which pixels show.
    std::vector<std::uint8_t> maskPixels(4 * count);
    if (!mask || !ReadPixels(dc.get(), mask.get(), width, height, maskPixels.data())) return {};
    for (std::size_t i = 0; i < count; ++i) pixels[4 * i + 3] = maskPixels[4 * i] ? 0 : 0xFF;
  }
  return bits;
}

IconHandle Win32Shell::IconFromBits(std::span<const std::uint8_t> bits) {
  if (bits.size() < kBitsHeader) return nullptr;
  const int width = bits[0] | bits[1] << 8, height = bits[2] | bits[3] << 8;
  if (width <= 0 || height <= 0 || width > kLargestIconSide || height > kLargestIconSide)
    return nullptr;
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  if (bits.size() != kBitsHeader + 4 * count) return nullptr;
  const std::uint8_t* pixels = bits.data() + kBitsHeader;

  BITMAPINFO info = TopDown32(width, height);
  void* colorBits = nullptr;
  const UniqueBitmap color(
      CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &colorBits, nullptr, 0));
  if (!color || !colorBits) return nullptr;
  std::memcpy(colorBits, pixels, 4 * count);
  // Monochrome rows are padded to 16 bits; a set bit is a pixel that does not show.
  const std::size_t stride = (static_cast<std::size_t>(width) + 15) / 16 * 2;
  std::vector<std::uint8_t> maskBits(stride * static_cast<std::size_t>(height), 0);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (pixels[4 * (static_cast<std::size_t>(y) * width + x) + 3] == 0)
        maskBits[y * stride + x / 8] |= static_cast<std::uint8_t>(0x80 >> (x % 8));
    }
  }
  const UniqueBitmap mask(CreateBitmap(width, height, 1, 1, maskBits.data()));
  if (!mask) return nullptr;
  ICONINFO parts{};
  parts.fIcon = TRUE;
  parts.hbmColor = color.get();
  parts.hbmMask = mask.get();
  return OwnIcon(CreateIconIndirect(&parts));
}

IconHandle Win32Shell::SmallFileIcon(std::wstring_view path, int& systemIndex) {
  systemIndex = -1;
  auto apiPath = ApiString(path);
  if (!apiPath || apiPath->empty()) return nullptr;
  SHFILEINFOW info{};
  if (!SHGetFileInfoW(apiPath->c_str(), 0, &info, sizeof(info),
                      SHGFI_ICON | SHGFI_SMALLICON | SHGFI_SYSICONINDEX) ||
      !info.hIcon)
    return nullptr;
  systemIndex = info.iIcon;
  return OwnIcon(info.hIcon);
}

}  // namespace varnel::win32
