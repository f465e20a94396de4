#include "leftovers/scan_driver.h"

#include "core/registry_location.h"
#include "base/text.h"
#include "leftovers/other_programs.h"

namespace varnel {

namespace {

// Icon of "file,index" as DisplayIcon writes it.
IconHandle DisplayIconOf(IShell& shell, const std::wstring& displayIcon) {
  std::wstring file = displayIcon;
  int index = 0;
  auto comma = file.rfind(L',');
  if (comma != std::wstring::npos) {
    try {
      index = std::stoi(file.substr(comma + 1));
    } catch (...) {
      index = 0;
    }
    file.resize(comma);
  }
  file = text::Dequote(text::Trim(file), L'"');
  IconHandle small, large;
  shell.ExtractIcons(file, index, small, large);
  return small;
}

}  // namespace

std::wstring FormatCountPhrase(const std::wstring& phrase, int count) {
  auto at = phrase.find(L"%d");
  if (at == std::wstring::npos) return phrase;
  return phrase.substr(0, at) + std::to_wstring(count) + phrase.substr(at + 2);
}

ScanDriver::ScanDriver(const Platform& platform, const TFilterManage& filter,
                       TRegeditScanClasses::MessageStep processMessages)
    : platform_(platform), filter_(filter), processMessages_(std::move(processMessages)) {}

void ScanDriver::BeginBatch() {
  if (together_.size() < 2) return;
  // The copy is taken inside the first scan, on the window's thread: the
  // window stays served and Stop ends the copy, the scan going on live.
  batch_ = std::make_unique<ScanReads>(platform_, [this] {
    if (processMessages_) processMessages_();
    return !stop_;
  });
}

void ScanDriver::Stop() {
  stop_ = true;
  if (active_) active_->Stop();
}

std::wstring ScanDriver::CountPhrase(int count) const {
  return FormatCountPhrase(count == 1 ? SingularPhrase : PluralPhrase, count);
}

ScanFindings ScanDriver::Collect(const SoftList& list, int index, const std::wstring& filePath,
                                  IImageList* images) {
  ScanFindings found;
  const bool inList = index >= 0 && index < static_cast<int>(list.size());
  if (!inList) {
    found.Record.Name = text::ExtractFileName(filePath);
    found.Record.InstallLocation = text::ExtractFilePath(filePath);
    found.Record.Is64BitView = false;
  } else {
    CopySoftInfo(found.Record, *list[index]);
  }
  std::unique_ptr<ProtectedPlaces> ownPlaces;
  if (!places_) {
    auto scanned = together_;
    if (inList) scanned.push_back(index);
    ownPlaces = std::make_unique<ProtectedPlaces>(platform_, OtherProgramFolders(platform_, list, scanned));
  }
  TRegeditScanClasses scanner(batch_ ? batch_->Machine() : platform_, filter_, processMessages_);
  scanner.SetProtectedPlaces(places_ ? places_ : ownPlaces.get());
  scanner.SetUp(&found.Registry, &found.Files, 0, found.Record, images);
  stop_ = false;
  active_ = &scanner;
  if (!filePath.empty()) {
    scanner.FileOnlyScan();
  } else if (found.Record.IsToolbar && found.Record.UninstallString.empty()) {
    scanner.ToolbarScan(found.Record.ToolbarClsid);
    // The toolbar scan ends idle, so only the flag tells the walk not to start.
    if (!stop_) scanner.FileOnlyScan();
  } else {
    scanner.FullScan();
  }
  active_ = nullptr;
  found.Stopped = stop_;
  return found;
}

int ScanDriver::ScanProgram(const SoftList& list, const IImageList* listImages, int index,
                             IResultsTree& tree, const std::wstring& filePath,
                             IImageList* treeImages) {
  return AddBranch(Collect(list, index, filePath, treeImages), listImages, tree, treeImages);
}

int ScanDriver::AddBranch(const ScanFindings& found, const IImageList* listImages,
                           IResultsTree& tree, IImageList* treeImages) {
  const int count = found.Count();
  if (count <= 0) return 0;
  const auto& record = found.Record;

  IconHandle icon;
  if (listImages) {
    int at = record.ImageIndex < listImages->Count() ? record.ImageIndex : 0;
    icon = listImages->Icon(at);
  } else {
    icon = DisplayIconOf(platform_.shell, record.DisplayIcon);
  }
  int branchImage = treeImages && icon ? treeImages->Add(icon) : -1;

  auto branch = tree.AddNode(kTreeRoot, record.Name + L"(" + CountPhrase(count) + L")",
                             branchImage, 1, nullptr);
  if (!found.Registry.empty()) {
    auto node = tree.AddNode(
        branch, L"Registry(" + CountPhrase(static_cast<int>(found.Registry.size())) + L")", 0, 1,
        nullptr);
    for (const auto& item : found.Registry) {
      const bool isValue = !item.ValueName.empty() || !item.ValueData.empty();
      tree.AddNode(node,
                   FormatRegistryLocation(item.Root, item.KeyPath, item.ValueName, item.ValueData),
                   isValue ? 2 : 1, 1,
                   std::make_unique<TMyTreeData>(RegistryTreeData(item, record.Is64BitView)));
    }
  }
  if (!found.Files.empty()) {
    auto node = tree.AddNode(
        branch, L"File(" + CountPhrase(static_cast<int>(found.Files.size())) + L")", 3, 1,
        nullptr);
    for (const auto& item : found.Files)
      tree.AddNode(node, item.Path, item.IconIndex, 1,
                   std::make_unique<TMyTreeData>(FileTreeData(item, record.Is64BitView)));
  }
  return count;
}

}  // namespace varnel
