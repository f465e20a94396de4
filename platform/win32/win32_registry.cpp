#include "platform/win32/win32_registry.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>

#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

// Documented key name limit, in characters without the terminator.
constexpr DWORD kMaxKeyName = 255;
// A value rewritten between the size query and the read sends us round
// again; a few rounds settle any honest race.
constexpr int kReadAttempts = 8;
// First guess at a value's size; most Uninstall values fit.
constexpr std::size_t kFirstRead = 512;

// Buffers are per call, not per thread: thread_local objects with
// destructors run those destructors after this toolchain has freed the
// thread's storage, and short-lived reader threads then corrupt the heap.

HKEY RootHandle(RegRoot root) {
  switch (root) {
    case RegRoot::ClassesRoot:
      return HKEY_CLASSES_ROOT;
    case RegRoot::CurrentUser:
      return HKEY_CURRENT_USER;
    case RegRoot::LocalMachine:
      return HKEY_LOCAL_MACHINE;
    case RegRoot::Users:
      return HKEY_USERS;
    case RegRoot::PerformanceData:
      return HKEY_PERFORMANCE_DATA;
    case RegRoot::CurrentConfig:
      return HKEY_CURRENT_CONFIG;
    case RegRoot::Invalid:
      break;
  }
  return nullptr;
}

// On 64-bit Windows both views are always named explicitly, so the answer
// does not depend on this executable's own bitness.
REGSAM ViewFlag(bool hasViews, bool use64) {
  if (!hasViews) return 0;
  return use64 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
}

bool IsStringType(DWORD type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Key path without the leading/trailing "\" callers may write.
std::optional<std::wstring> SubKey(std::wstring_view path) {
  while (!path.empty() && path.front() == L'\\') path.remove_prefix(1);
  while (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
  return ApiString(path);
}

// Names of subkeys or values, enumerated with one buffer that already holds
// any key name. Only a name that outgrows it (a long value
// name, or a key name longer than the documented limit, which some
// registries allow) costs a RegQueryInfoKeyW, as that is one more round
// trip per key in an inventory walk; a name that still does not fit is
// skipped rather than ending the walk.
template <typename Query, typename Enum>
std::vector<std::wstring> EnumerateNames(Query maxLength, Enum enumerate) {
  std::vector<std::wstring> names;
  DWORD count = 0, maxLen = 0;
  std::vector<wchar_t> buffer(kMaxKeyName + 1);
  int regrowths = 0;
  for (DWORD index = 0;;) {
    DWORD length = static_cast<DWORD>(buffer.size());
    LONG status = enumerate(index, buffer.data(), &length);
    if (status == ERROR_SUCCESS) {
      names.emplace_back(buffer.data(), length);
      ++index;
      regrowths = 0;
    } else if (status == ERROR_MORE_DATA) {
      if (regrowths++ < 2 && maxLength(&count, &maxLen)) {
        buffer.resize(std::max<std::size_t>(maxLen + 1, buffer.size() * 2));
      } else {
        ++index;
        regrowths = 0;
      }
    } else {
      break;
    }
  }
  return names;
}

class Win32RegistryKey final : public IRegistryKey {
 public:
  explicit Win32RegistryKey(UniqueHkey key) : key_(std::move(key)) {}

  std::vector<std::wstring> SubKeyNames() const override {
    return EnumerateNames(
        [this](DWORD* count, DWORD* maxLen) {
          return RegQueryInfoKeyW(key_.get(), nullptr, nullptr, nullptr, count, maxLen, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
        },
        [this](DWORD index, wchar_t* name, DWORD* length) {
          return RegEnumKeyExW(key_.get(), index, name, length, nullptr, nullptr, nullptr, nullptr);
        });
  }

  std::vector<std::wstring> ValueNames() const override {
    return EnumerateNames(
        [this](DWORD* count, DWORD* maxLen) {
          return RegQueryInfoKeyW(key_.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  count, maxLen, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
        },
        [this](DWORD index, wchar_t* name, DWORD* length) {
          return RegEnumValueW(key_.get(), index, name, length, nullptr, nullptr, nullptr, nullptr);
        });
  }

  std::optional<RegValue> ReadValue(std::wstring_view name) const override {
    auto valueName = ApiString(name);
    if (!valueName) return std::nullopt;
    std::vector<std::uint8_t> data(kFirstRead);
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
      DWORD type = REG_NONE;
      DWORD size = static_cast<DWORD>(data.size());
      LONG status =
          RegQueryValueExW(key_.get(), valueName->c_str(), nullptr, &type, data.data(), &size);
      if (status == ERROR_SUCCESS) {
        data.resize(size);
        return RegValue{type, std::move(data)};
      }
      if (status != ERROR_MORE_DATA) break;
      // The size reported may be stale by the next call; doubling also
      // covers sources that report no size at all.
      data.resize(std::max<std::size_t>(size, data.size() * 2));
    }
    return std::nullopt;
  }

  std::vector<std::pair<std::wstring, RegValue>> Values() const override {
    std::vector<std::pair<std::wstring, RegValue>> values;
    std::vector<wchar_t> name(kMaxKeyName + 1);
    std::size_t dataSize = kFirstRead;
    int regrowths = 0;
    for (DWORD index = 0;;) {
      std::vector<std::uint8_t> data(dataSize);
      DWORD nameLength = static_cast<DWORD>(name.size());
      DWORD size = static_cast<DWORD>(data.size());
      DWORD type = REG_NONE;
      LONG status = RegEnumValueW(key_.get(), index, name.data(), &nameLength, nullptr, &type,
                                  data.data(), &size);
      if (status == ERROR_SUCCESS) {
        data.resize(size);
        values.emplace_back(std::wstring(name.data(), nameLength), RegValue{type, std::move(data)});
        ++index;
        regrowths = 0;
        continue;
      }
      if (status != ERROR_MORE_DATA) break;
      // Name or data outgrew the buffers; a value that still does not fit
      // after the key's own maxima is skipped rather than ending the list.
      DWORD maxName = 0, maxData = 0;
      if (regrowths++ < 2 &&
          RegQueryInfoKeyW(key_.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, &maxName, &maxData, nullptr, nullptr) == ERROR_SUCCESS) {
        name.resize(std::max<std::size_t>(maxName + 1, name.size()));
        dataSize = std::max<std::size_t>({maxData, size, dataSize * 2});
      } else {
        ++index;
        regrowths = 0;
      }
    }
    return values;
  }

  bool ValueExists(std::wstring_view name) const override {
    auto valueName = ApiString(name);
    return valueName && RegQueryValueExW(key_.get(), valueName->c_str(), nullptr, nullptr, nullptr,
                                         nullptr) == ERROR_SUCCESS;
  }

  bool WriteValue(std::wstring_view name, const RegValue& value) override {
    auto valueName = ApiString(name);
    if (!valueName || value.data.size() > MAXDWORD - 2) return false;
    const std::uint8_t* data = value.data.empty() ? nullptr : value.data.data();
    std::vector<std::uint8_t> guarded;
    if (IsStringType(value.type) && !value.data.empty()) {
      // RegSetValueExW peeks at the character after a string that lacks its
      // terminator and, if it is zero, stores one more character than asked.
      // A non-zero guard keeps the stored bytes exactly those given.
      guarded.reserve(value.data.size() + 2);
      guarded.assign(value.data.begin(), value.data.end());
      guarded.push_back(0xFF);
      guarded.push_back(0xFF);
      data = guarded.data();
    }
    return RegSetValueExW(key_.get(), valueName->c_str(), 0, value.type, data,
                          static_cast<DWORD>(value.data.size())) == ERROR_SUCCESS;
  }

  bool DeleteValue(std::wstring_view name) override {
    auto valueName = ApiString(name);
    return valueName && RegDeleteValueW(key_.get(), valueName->c_str()) == ERROR_SUCCESS;
  }

  std::uint64_t LastWriteTime() const override {
    FILETIME written{};
    if (RegQueryInfoKeyW(key_.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, &written) != ERROR_SUCCESS) {
      return 0;
    }
    return ToFileTime(written);
  }

 private:
  UniqueHkey key_;
};

}  // namespace

Win32Registry::Win32Registry(bool hasViews) : hasViews_(hasViews) {}

std::unique_ptr<IRegistryKey> Win32Registry::OpenKey(RegRoot root, std::wstring_view path,
                                                     RegAccess access, bool use64) {
  HKEY rootKey = RootHandle(root);
  auto subKey = SubKey(path);
  if (!rootKey || !subKey) return nullptr;
  REGSAM rights = access == RegAccess::Write ? KEY_READ | KEY_WRITE : KEY_READ;
  UniqueHkey key;
  if (RegOpenKeyExW(rootKey, subKey->c_str(), 0, rights | ViewFlag(hasViews_, use64), key.put()) !=
      ERROR_SUCCESS) {
    return nullptr;
  }
  return std::make_unique<Win32RegistryKey>(std::move(key));
}

std::unique_ptr<IRegistryKey> Win32Registry::CreateKey(RegRoot root, std::wstring_view path,
                                                       bool use64) {
  HKEY rootKey = RootHandle(root);
  auto subKey = SubKey(path);
  if (!rootKey || !subKey) return nullptr;
  UniqueHkey key;
  if (RegCreateKeyExW(rootKey, subKey->c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                      KEY_READ | KEY_WRITE | ViewFlag(hasViews_, use64), nullptr, key.put(),
                      nullptr) != ERROR_SUCCESS) {
    return nullptr;
  }
  return std::make_unique<Win32RegistryKey>(std::move(key));
}

bool Win32Registry::KeyExists(RegRoot root, std::wstring_view path, bool use64) {
  HKEY rootKey = RootHandle(root);
  auto subKey = SubKey(path);
  if (!rootKey || !subKey) return false;
  UniqueHkey key;
  LONG status = RegOpenKeyExW(rootKey, subKey->c_str(), 0,
                              KEY_QUERY_VALUE | ViewFlag(hasViews_, use64), key.put());
  // A key we may not read is still there.
  return status == ERROR_SUCCESS || status == ERROR_ACCESS_DENIED;
}

bool Win32Registry::DeleteKey(RegRoot root, std::wstring_view path, bool use64) {
  HKEY rootKey = RootHandle(root);
  auto subKey = SubKey(path);
  // An empty path would mean the root itself.
  if (!rootKey || !subKey || subKey->empty()) return false;
  REGSAM view = ViewFlag(hasViews_, use64);
  {
    UniqueHkey key;
    if (RegOpenKeyExW(rootKey, subKey->c_str(), 0,
                      DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE | view,
                      key.put()) != ERROR_SUCCESS) {
      return false;
    }
    // Subkeys resolve below the handle, so they stay in the view it was
    // opened in.
    if (RegDeleteTreeW(key.get(), nullptr) != ERROR_SUCCESS) return false;
  }
  return RegDeleteKeyExW(rootKey, subKey->c_str(), view, 0) == ERROR_SUCCESS;
}

// Every call is a round trip to the registry's owner (the kernel, or
// Wine's server); a few readers keep it busy while each waits.
int Win32Registry::ConcurrentReaders() const { return 6; }

}  // namespace varnel::win32
