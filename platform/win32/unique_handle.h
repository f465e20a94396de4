#pragma once

#include <windows.h>

#include <objbase.h>

#include <utility>

namespace varnel::win32 {

namespace detail {
template <typename Handle>
constexpr Handle NullHandle() {
  return Handle{};
}
inline HANDLE InvalidHandleValue() { return INVALID_HANDLE_VALUE; }
}  // namespace detail

// Owns one handle and closes it once. Invalid is the "no handle" value the
// opening API returns on failure (null for most, INVALID_HANDLE_VALUE for
// files and searches).
template <typename Handle, auto Close, Handle (*Invalid)() = &detail::NullHandle<Handle>>
class UniqueAny {
 public:
  UniqueAny() noexcept : handle_(Invalid()) {}
  explicit UniqueAny(Handle handle) noexcept : handle_(handle) {}
  UniqueAny(UniqueAny&& other) noexcept : handle_(other.release()) {}
  UniqueAny& operator=(UniqueAny&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueAny(const UniqueAny&) = delete;
  UniqueAny& operator=(const UniqueAny&) = delete;
  ~UniqueAny() { reset(); }

  Handle get() const noexcept { return handle_; }
  explicit operator bool() const noexcept { return handle_ != Invalid(); }

  Handle release() noexcept { return std::exchange(handle_, Invalid()); }
  void reset(Handle handle = Invalid()) noexcept {
    Handle old = std::exchange(handle_, handle);
    if (old != Invalid()) Close(old);
  }
  // For out-parameters: closes what is held and hands out the slot.
  Handle* put() noexcept {
    reset();
    return &handle_;
  }

 private:
  Handle handle_;
};

using UniqueHkey = UniqueAny<HKEY, &RegCloseKey>;
using UniqueHandle = UniqueAny<HANDLE, &CloseHandle>;
using UniqueFile = UniqueAny<HANDLE, &CloseHandle, &detail::InvalidHandleValue>;
using UniqueFind = UniqueAny<HANDLE, &FindClose, &detail::InvalidHandleValue>;
using UniqueModule = UniqueAny<HMODULE, &FreeLibrary>;
using UniqueBitmap = UniqueAny<HBITMAP, &DeleteObject>;
using UniqueDc = UniqueAny<HDC, &DeleteDC>;

template <typename Interface>
void ReleaseInterface(Interface* p) {
  p->Release();
}
template <typename Interface>
using UniqueCom = UniqueAny<Interface*, &ReleaseInterface<Interface>>;

// Balances a successful CoInitializeEx on this thread; a thread already in
// another apartment keeps it.
class ComScope {
 public:
  ComScope() : hr_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
  ~ComScope() {
    if (SUCCEEDED(hr_)) CoUninitialize();
  }
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;

 private:
  HRESULT hr_;
};

// GetProcAddress with the cast that function-pointer warnings accept.
template <typename Fn>
Fn GetProc(HMODULE module, const char* name) {
  if (!module) return nullptr;
  return reinterpret_cast<Fn>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace varnel::win32
