#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "leftovers/image_list.h"
#include "leftovers/scan_category.h"
#include "leftovers/scan_context.h"
#include "leftovers/scan_results.h"

namespace varnel {

// Where the steps of one scan file what they find: the per-category lists
// that report each name once, the two result lists and the icons of the
// files found.
class ScanSink {
 public:
  // `context` outlives the sink.
  explicit ScanSink(const ScanContext& context)
      : context_(context), registry_(&ownRegistry_), files_(&ownFiles_) {}
  ScanSink(const ScanSink&) = delete;
  ScanSink& operator=(const ScanSink&) = delete;

  // The result lists stay the caller's (null: the sink's own); `images` may
  // be null (no icons then).
  void SetUp(std::vector<TShowRegInfo>* registry, std::vector<TFileInfo>* files,
             IImageList* images);
  void ClearResults();

  NamedList<TRegeditItemGroup>& Category(ScanCategory category) {
    return categories_[static_cast<std::size_t>(category)];
  }
  const NamedList<TRegeditItemGroup>& Category(ScanCategory category) const {
    return categories_[static_cast<std::size_t>(category)];
  }

  // Files the key (and, when `recursive`, every subkey) under `name` in the
  // category and reports it with its values; nothing when the name is filed
  // already or the key does not open. Returns the new group or null.
  TRegeditItemGroup* AddKey(ScanCategory category, RegRoot root, bool recursive,
                            const std::wstring& name, const std::wstring& keyPath);
  // The same, filed in a group's subkey list.
  TRegeditItemGroup* AddKey(TRegeditItemGroup& parent, RegRoot root, bool recursive,
                            const std::wstring& name, const std::wstring& keyPath);
  // Reports a value; an unset default value (no name, no data) is skipped, and
  // a name already filed in `group` is reported once.
  void AddValue(TRegeditItemGroup* group, RegRoot root, const std::wstring& keyPath,
                const std::wstring& valueName, const std::wstring& data);
  // The group filed under `name` in the category, made empty when missing.
  TRegeditItemGroup& CategoryRoot(ScanCategory category, const std::wstring& name);

  // Reports a file or folder with the shell's small icon when there is an image list.
  void AddFile(const std::wstring& path, std::uint32_t word1, std::uint32_t word2,
               std::uint32_t kind);

  const std::vector<TShowRegInfo>& RegistryResults() const { return *registry_; }
  const std::vector<TFileInfo>& FileResults() const { return *files_; }

 private:
  TRegeditItemGroup* AddKeyTo(NamedList<TRegeditItemGroup>& list, RegRoot root, bool recursive,
                              const std::wstring& name, const std::wstring& keyPath);
  void AddKeyBody(TRegeditItemGroup& group, IRegistryKey& key, bool recursive);

  const ScanContext& context_;
  std::array<NamedList<TRegeditItemGroup>, kScanCategoryCount> categories_;
  std::vector<TShowRegInfo>* registry_;
  std::vector<TFileInfo>* files_;
  std::vector<TShowRegInfo> ownRegistry_;  // until SetUp hands lists over
  std::vector<TFileInfo> ownFiles_;
  IImageList* images_ = nullptr;
  std::unordered_map<int, int> iconCache_;  // system icon index -> our index
};

}  // namespace varnel
