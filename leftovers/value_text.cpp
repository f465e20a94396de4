#include "leftovers/value_text.h"

#include "base/text.h"

namespace varnel {

namespace {

std::uint64_t LittleEndian(const std::vector<std::uint8_t>& data, std::size_t bytes) {
  std::uint64_t n = 0;
  for (std::size_t i = 0; i < bytes && i < data.size(); ++i)
    n |= static_cast<std::uint64_t>(data[i]) << (8 * i);
  return n;
}

// Every code unit, zeros included.
std::wstring AllUnits(const std::vector<std::uint8_t>& bytes) {
  std::wstring r;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    r.push_back(static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8)));
  return r;
}

}  // namespace

std::wstring RegValueText(const RegValue& value) {
  switch (value.type) {
    case RegType::String:
    case RegType::ExpandString:
    case RegType::Link:
      return text::FromUtf16Bytes(value.data);
    case RegType::MultiString: {
      std::wstring all = AllUnits(value.data);
      std::wstring joined;
      std::size_t start = 0;
      while (start < all.size()) {
        auto end = all.find(L'\0', start);
        if (end == std::wstring::npos) end = all.size();
        if (end == start) break;  // the empty item that ends the list
        if (!joined.empty()) joined += L' ';
        joined.append(all, start, end - start);
        start = end + 1;
      }
      return joined;
    }
    case RegType::DWord:
      return std::to_wstring(static_cast<std::uint32_t>(LittleEndian(value.data, 4)));
    case RegType::DWordBigEndian: {
      std::uint32_t n = 0;
      for (std::size_t i = 0; i < 4 && i < value.data.size(); ++i) n = (n << 8) | value.data[i];
      return std::to_wstring(n);
    }
    case RegType::QWord:
      return std::to_wstring(LittleEndian(value.data, 8));
    default: {
      std::wstring text;
      for (auto byte : value.data) {
        if (byte == 0) break;
        text += static_cast<wchar_t>(byte);
      }
      return text;
    }
  }
}

std::wstring ReadValueText(const IRegistryKey& key, std::wstring_view name) {
  auto value = key.ReadValue(name);
  return value ? RegValueText(*value) : std::wstring();
}

}  // namespace varnel
