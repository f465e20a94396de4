#pragma once

#include "platform/registry.h"

namespace varnel::win32 {

// The registry seen as a 32-bit process on 64-bit Windows sees it: the
// default view is the 32-bit one and use64 picks the 64-bit one.
class Win32Registry final : public IRegistry {
 public:
  // hasViews: the system keeps a 32-bit and a 64-bit view (64-bit Windows).
  explicit Win32Registry(bool hasViews);

  std::unique_ptr<IRegistryKey> OpenKey(RegRoot root, std::wstring_view path, RegAccess access,
                                        bool use64) override;
  std::unique_ptr<IRegistryKey> CreateKey(RegRoot root, std::wstring_view path,
                                          bool use64) override;
  bool KeyExists(RegRoot root, std::wstring_view path, bool use64) override;
  bool DeleteKey(RegRoot root, std::wstring_view path, bool use64) override;
  int ConcurrentReaders() const override;

 private:
  bool hasViews_;
};

}  // namespace varnel::win32
