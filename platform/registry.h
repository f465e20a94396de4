#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnel {

// The predefined root keys, with the values Windows gives their handles.
enum class RegRoot : std::uint32_t {
  ClassesRoot = 0x80000000u,
  CurrentUser = 0x80000001u,
  LocalMachine = 0x80000002u,
  Users = 0x80000003u,
  PerformanceData = 0x80000004u,
  CurrentConfig = 0x80000005u,
  Invalid = 0xFFFFFFFFu,
};

namespace RegType {
constexpr std::uint32_t None = 0;
constexpr std::uint32_t String = 1;
constexpr std::uint32_t ExpandString = 2;
constexpr std::uint32_t Binary = 3;
constexpr std::uint32_t DWord = 4;
constexpr std::uint32_t DWordBigEndian = 5;
constexpr std::uint32_t Link = 6;
constexpr std::uint32_t MultiString = 7;
constexpr std::uint32_t QWord = 11;
}  // namespace RegType

// Raw value as the registry stores it; strings are UTF-16LE bytes.
struct RegValue {
  std::uint32_t type = RegType::None;
  std::vector<std::uint8_t> data;
};

enum class RegAccess { Read, Write };

// An open key. Closing happens when the object is destroyed.
class IRegistryKey {
 public:
  virtual ~IRegistryKey() = default;
  virtual std::vector<std::wstring> SubKeyNames() const = 0;
  virtual std::vector<std::wstring> ValueNames() const = 0;
  // Every value with its name, in the registry's order. Backends that can
  // read name and data in one call override this.
  virtual std::vector<std::pair<std::wstring, RegValue>> Values() const {
    std::vector<std::pair<std::wstring, RegValue>> values;
    for (auto& name : ValueNames()) {
      if (auto value = ReadValue(name)) values.emplace_back(std::move(name), std::move(*value));
    }
    return values;
  }
  // Empty name is the key's default value.
  virtual std::optional<RegValue> ReadValue(std::wstring_view name) const = 0;
  virtual bool ValueExists(std::wstring_view name) const = 0;
  virtual bool WriteValue(std::wstring_view name, const RegValue& value) = 0;
  virtual bool DeleteValue(std::wstring_view name) = 0;
  // Last write time as a FILETIME count; 0 when unknown.
  virtual std::uint64_t LastWriteTime() const = 0;
};

// Paths are relative to the root; a leading or trailing "\" is ignored.
// use64 selects the 64-bit view on a 64-bit system; on a 32-bit system there
// is only one view and the flag changes nothing.
class IRegistry {
 public:
  virtual ~IRegistry() = default;
  virtual std::unique_ptr<IRegistryKey> OpenKey(RegRoot root, std::wstring_view path,
                                                RegAccess access, bool use64) = 0;
  // Opens for writing, creating the key and any missing parents.
  virtual std::unique_ptr<IRegistryKey> CreateKey(RegRoot root, std::wstring_view path,
                                                  bool use64) = 0;
  virtual bool KeyExists(RegRoot root, std::wstring_view path, bool use64) = 0;
  // Deletes the key with everything below it; false when it could not.
  virtual bool DeleteKey(RegRoot root, std::wstring_view path, bool use64) = 0;
  // How many threads reading at once still pay: where every read is a round
  // trip to another process, readers overlap their waits. Such readers only
  // open keys for reading.
  virtual int ConcurrentReaders() const { return 1; }
};

}  // namespace varnel
