#include <algorithm>
#include <array>

#include "base/text.h"
#include "platform/memory/memory_platform.h"

namespace varnel::mem {

struct MemoryRegistry::Node {
  std::wstring name;
  std::map<std::wstring, std::shared_ptr<Node>> children;  // by upper-cased name
  std::vector<std::pair<std::wstring, RegValue>> values;   // in creation order
  std::uint64_t lastWrite = 0;
  bool deleted = false;
};

using Node = MemoryRegistry::Node;

namespace {

constexpr std::size_t kMaxKeyNameLength = 255;
constexpr wchar_t kCurrentUserSid[] = L"S-1-5-21-1000-1000-1000-1001";

// Keys that 64-bit Windows keeps apart for 32-bit programs under "Classes".
constexpr std::array<std::wstring_view, 5> kRedirectedClasses = {
    L"CLSID", L"DIRECTSHOW", L"INTERFACE", L"MEDIA TYPE", L"MEDIAFOUNDATION"};

// Subkeys of HKLM\Software that both views share.
constexpr std::array<std::wstring_view, 6> kSharedSoftware = {
    L"POLICIES", L"REGISTEREDAPPLICATIONS", L"MICROSOFT\\COM3", L"MICROSOFT\\EVENTSYSTEM",
    L"MICROSOFT\\OLE", L"MICROSOFT\\RPC"};

std::vector<std::wstring> SplitKeyPath(std::wstring_view path) {
  std::vector<std::wstring> parts;
  std::size_t start = 0;
  while (start <= path.size()) {
    std::size_t end = path.find(L'\\', start);
    if (end == std::wstring_view::npos) end = path.size();
    if (end > start) parts.emplace_back(path.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

void RedirectClasses(std::vector<std::wstring>& parts, std::size_t at) {
  if (parts.size() <= at) return;
  const std::wstring name = text::Upper(parts[at]);
  if (std::find(kRedirectedClasses.begin(), kRedirectedClasses.end(), name) !=
      kRedirectedClasses.end())
    parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(at), L"Wow6432Node");
}

bool IsSharedSoftware(const std::vector<std::wstring>& parts) {
  for (std::wstring_view shared : kSharedSoftware) {
    const auto pieces = SplitKeyPath(shared);
    if (parts.size() < pieces.size() + 1) continue;
    bool match = true;
    for (std::size_t i = 0; i < pieces.size() && match; ++i)
      match = text::SameText(parts[i + 1], pieces[i]);
    if (match) return true;
  }
  return false;
}

void RedirectMachine(std::vector<std::wstring>& parts) {
  if (parts.empty() || !text::SameText(parts[0], L"SOFTWARE")) return;
  if (parts.size() == 1) {
    parts.emplace_back(L"Wow6432Node");
    return;
  }
  if (text::SameText(parts[1], L"WOW6432NODE")) return;
  if (text::SameText(parts[1], L"CLASSES")) {
    RedirectClasses(parts, 2);
    return;
  }
  if (IsSharedSoftware(parts)) return;
  parts.insert(parts.begin() + 1, L"Wow6432Node");
}

std::shared_ptr<Node> NewNode(std::wstring name) {
  auto n = std::make_shared<Node>();
  n->name = std::move(name);
  return n;
}

const RegValue* FindValue(const Node* node, std::wstring_view name) {
  if (!node || node->deleted) return nullptr;
  for (const auto& [n, v] : node->values)
    if (text::SameText(n, name)) return &v;
  return nullptr;
}

void MarkDeleted(Node& node) {
  node.deleted = true;
  for (auto& [_, child] : node.children) MarkDeleted(*child);
}

}  // namespace

struct MemoryRegistry::Location {
  bool valid = false;
  std::shared_ptr<Node> base;
  std::vector<std::wstring> parts;
  std::size_t fixed = 0;  // leading parts that the root itself stands for
  // HKEY_CLASSES_ROOT reads the user's classes first, then the machine's.
  std::shared_ptr<Node> fallbackBase;
  std::vector<std::wstring> fallbackParts;
  std::size_t fallbackFixed = 0;

  Location Fallback() const { return Location{true, fallbackBase, fallbackParts, fallbackFixed, nullptr, {}, 0}; }
};

class MemoryRegistryKey final : public IRegistryKey {
 public:
  MemoryRegistryKey(MemoryRegistry& owner, std::shared_ptr<Node> primary,
                    std::shared_ptr<Node> fallback, RegAccess access)
      : owner_(owner), primary_(std::move(primary)), fallback_(std::move(fallback)),
        access_(access) {}

  std::vector<std::wstring> SubKeyNames() const override {
    std::vector<std::wstring> names;
    if (owner_.faults_.Fails(Fault::RegEnumKeys)) return names;
    std::map<std::wstring, std::wstring> merged;
    for (const Node* n : {primary_.get(), fallback_.get()})
      if (n && !n->deleted)
        for (const auto& [upper, child] : n->children) merged.emplace(upper, child->name);
    names.reserve(merged.size());
    for (auto& [_, name] : merged) names.push_back(name);
    return names;
  }

  std::vector<std::wstring> ValueNames() const override {
    std::vector<std::wstring> names;
    if (owner_.faults_.Fails(Fault::RegEnumValues)) return names;
    for (const Node* n : {primary_.get(), fallback_.get()}) {
      if (!n || n->deleted) continue;
      for (const auto& entry : n->values) {
        const std::wstring& name = entry.first;
        const bool seen = std::any_of(names.begin(), names.end(), [&](const std::wstring& s) {
          return text::SameText(s, name);
        });
        if (!seen) names.push_back(name);
      }
    }
    return names;
  }

  std::optional<RegValue> ReadValue(std::wstring_view name) const override {
    if (owner_.faults_.Fails(Fault::RegRead)) return std::nullopt;
    const RegValue* v = Lookup(name);
    if (!v) return std::nullopt;
    return *v;
  }

  bool ValueExists(std::wstring_view name) const override { return Lookup(name) != nullptr; }

  bool WriteValue(std::wstring_view name, const RegValue& value) override {
    Node* target = Target();
    if (!target || access_ != RegAccess::Write || owner_.faults_.Fails(Fault::RegWrite))
      return false;
    for (auto& [n, v] : target->values) {
      if (text::SameText(n, name)) {
        v = value;
        owner_.Touch(*target);
        return true;
      }
    }
    target->values.emplace_back(std::wstring(name), value);
    owner_.Touch(*target);
    return true;
  }

  bool DeleteValue(std::wstring_view name) override {
    Node* target = Target();
    if (!target || access_ != RegAccess::Write || owner_.faults_.Fails(Fault::RegDeleteValue))
      return false;
    auto& values = target->values;
    auto it = std::find_if(values.begin(), values.end(),
                           [&](const auto& p) { return text::SameText(p.first, name); });
    if (it == values.end()) return false;
    values.erase(it);
    owner_.Touch(*target);
    return true;
  }

  std::uint64_t LastWriteTime() const override {
    const Node* n = Target();
    return n ? n->lastWrite : 0;
  }

 private:
  Node* Target() const {
    if (primary_ && !primary_->deleted) return primary_.get();
    if (fallback_ && !fallback_->deleted) return fallback_.get();
    return nullptr;
  }
  const RegValue* Lookup(std::wstring_view name) const {
    if (const RegValue* v = FindValue(primary_.get(), name)) return v;
    return FindValue(fallback_.get(), name);
  }

  MemoryRegistry& owner_;
  std::shared_ptr<Node> primary_;
  std::shared_ptr<Node> fallback_;
  RegAccess access_;
};

MemoryRegistry::MemoryRegistry(FaultSwitches& faults, bool is64BitSystem)
    : faults_(faults), is64_(is64BitSystem), machine_(NewNode(L"HKEY_LOCAL_MACHINE")),
      users_(NewNode(L"HKEY_USERS")), config_(NewNode(L"HKEY_CURRENT_CONFIG")) {
  users_->children.emplace(text::Upper(kCurrentUserSid), NewNode(kCurrentUserSid));
  auto software = NewNode(L"SOFTWARE");
  software->children.emplace(L"CLASSES", NewNode(L"Classes"));
  machine_->children.emplace(L"SOFTWARE", software);
  machine_->children.emplace(L"SYSTEM", NewNode(L"SYSTEM"));
}

MemoryRegistry::~MemoryRegistry() = default;

MemoryRegistry::Location MemoryRegistry::Locate(RegRoot root, std::wstring_view path,
                                                bool use64) const {
  Location where;
  std::vector<std::wstring> parts = SplitKeyPath(path);
  for (const auto& part : parts)
    if (part.size() > kMaxKeyNameLength) return where;
  const bool view32 = is64_ && !use64;
  switch (root) {
    case RegRoot::LocalMachine:
      if (view32) RedirectMachine(parts);
      where.base = machine_;
      break;
    case RegRoot::CurrentUser:
      if (view32 && parts.size() > 2 && text::SameText(parts[0], L"SOFTWARE") &&
          text::SameText(parts[1], L"CLASSES"))
        RedirectClasses(parts, 2);
      parts.insert(parts.begin(), kCurrentUserSid);
      where.base = users_;
      where.fixed = 1;
      break;
    case RegRoot::Users:
      where.base = users_;
      break;
    case RegRoot::CurrentConfig:
      where.base = config_;
      break;
    case RegRoot::ClassesRoot: {
      if (view32) RedirectClasses(parts, 0);
      where.fallbackBase = machine_;
      where.fallbackParts = {L"SOFTWARE", L"Classes"};
      where.fallbackParts.insert(where.fallbackParts.end(), parts.begin(), parts.end());
      where.fallbackFixed = 2;
      where.base = users_;
      where.fixed = 3;
      parts.insert(parts.begin(), {std::wstring(kCurrentUserSid), L"Software", L"Classes"});
      break;
    }
    default:
      return where;
  }
  where.parts = std::move(parts);
  where.valid = true;
  return where;
}

std::shared_ptr<Node> MemoryRegistry::Walk(const Location& where, bool create) {
  if (!where.valid) return nullptr;
  std::shared_ptr<Node> node = where.base;
  for (const auto& part : where.parts) {
    if (node->deleted) return nullptr;
    const std::wstring key = text::Upper(part);
    auto it = node->children.find(key);
    if (it == node->children.end()) {
      if (!create) return nullptr;
      auto child = NewNode(part);
      Touch(*child);
      it = node->children.emplace(key, std::move(child)).first;
      Touch(*node);
    }
    node = it->second;
  }
  return node->deleted ? nullptr : node;
}

void MemoryRegistry::Touch(Node& node) { node.lastWrite = ++clock_; }

std::unique_ptr<IRegistryKey> MemoryRegistry::OpenKey(RegRoot root, std::wstring_view path,
                                                      RegAccess access, bool use64) {
  if (faults_.Fails(Fault::RegOpen)) return nullptr;
  const Location where = Locate(root, path, use64);
  if (!where.valid) return nullptr;
  auto primary = Walk(where, false);
  std::shared_ptr<Node> fallback;
  if (where.fallbackBase) {
    fallback = Walk(where.Fallback(), false);
  }
  if (!primary && !fallback) return nullptr;
  return std::make_unique<MemoryRegistryKey>(*this, std::move(primary), std::move(fallback),
                                             access);
}

std::unique_ptr<IRegistryKey> MemoryRegistry::CreateKey(RegRoot root, std::wstring_view path,
                                                        bool use64) {
  if (faults_.Fails(Fault::RegCreate)) return nullptr;
  Location where = Locate(root, path, use64);
  if (!where.valid) return nullptr;
  if (where.fallbackBase) {
    // New classes go to the machine unless the user already has the key.
    if (auto user = Walk(where, false))
      return std::make_unique<MemoryRegistryKey>(*this, user, nullptr, RegAccess::Write);
    where = where.Fallback();
  }
  auto node = Walk(where, true);
  if (!node) return nullptr;
  return std::make_unique<MemoryRegistryKey>(*this, std::move(node), nullptr, RegAccess::Write);
}

bool MemoryRegistry::KeyExists(RegRoot root, std::wstring_view path, bool use64) {
  return OpenKey(root, path, RegAccess::Read, use64) != nullptr;
}

bool MemoryRegistry::DeleteKey(RegRoot root, std::wstring_view path, bool use64) {
  if (faults_.Fails(Fault::RegDeleteKey)) return false;
  Location where = Locate(root, path, use64);
  if (!where.valid) return false;
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (where.parts.size() > where.fixed) {
      Location parentLoc = where;
      const std::wstring last = text::Upper(parentLoc.parts.back());
      parentLoc.parts.pop_back();
      if (auto parent = Walk(parentLoc, false)) {
        auto it = parent->children.find(last);
        if (it != parent->children.end()) {
          MarkDeleted(*it->second);
          parent->children.erase(it);
          Touch(*parent);
          return true;
        }
      }
    }
    if (!where.fallbackBase) break;
    where = where.Fallback();
  }
  return false;
}

void MemoryRegistry::SetRaw(RegRoot root, std::wstring_view path, std::wstring_view name,
                            const RegValue& value, bool use64) {
  Location where = Locate(root, path, use64);
  if (where.fallbackBase) where = where.Fallback();
  auto node = Walk(where, true);
  if (!node) return;
  for (auto& [n, v] : node->values) {
    if (text::SameText(n, name)) {
      v = value;
      return;
    }
  }
  node->values.emplace_back(std::wstring(name), value);
  Touch(*node);
}

void MemoryRegistry::SetString(RegRoot root, std::wstring_view path, std::wstring_view name,
                               std::wstring_view value, bool use64, std::uint32_t type) {
  SetRaw(root, path, name, RegValue{type, text::ToUtf16Bytes(value)}, use64);
}

void MemoryRegistry::SetDWord(RegRoot root, std::wstring_view path, std::wstring_view name,
                              std::uint32_t value, bool use64) {
  RegValue v{RegType::DWord, {}};
  for (int i = 0; i < 4; ++i) v.data.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  SetRaw(root, path, name, v, use64);
}

}  // namespace varnel::mem
