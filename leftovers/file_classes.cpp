// File classes, extensions and the all-files verbs: a key that only the
// program filled is reported whole; from a key that other programs share
// (an extension like .txt, Directory, "*") only the program's own verbs,
// handlers and "open with" values are.
#include <memory>
#include <utility>
#include <vector>

#include "base/text.h"
#include "leftovers/class_lookup.h"
#include "leftovers/scan_steps.h"
#include "leftovers/value_text.h"

namespace varnel::scan {

namespace {

constexpr std::wstring_view kUserClasses = L"\\Software\\Classes";
// Registry links can make a walk go round; real verbs are three levels deep.
constexpr int kMaxDepth = 8;

bool LooksLikeClassId(std::wstring_view text) {
  return text.size() == 38 && text.front() == L'{' && text.back() == L'}';
}

// What one class or extension key holds of the program.
struct Verdict {
  bool ours = false;     // something in it refers to the program
  bool foreign = false;  // something in it refers to another program
  bool owned = false;    // a ProgID of one of the program's classes, whatever else it holds
  std::vector<std::wstring> keys;  // the program's entries, relative to the key
  struct Value {
    std::wstring key, name, data;
  };
  std::vector<Value> values;
  std::wstring curVer;  // a current version not known as the program's yet
};

// What a subtree's values name.
struct Survey {
  bool refers = false;        // the install folder
  bool programClass = false;  // one of the program's classes
  bool content = false;       // anything at all
  bool Ours() const { return refers || programClass; }
};

class ClassReader {
 public:
  // Reads what `found` filed so far: the program's classes.
  ClassReader(const ScanContext& scan, const ScanSink& found, RegRoot root)
      : scan_(scan), found_(found), root_(root) {}

  std::unique_ptr<IRegistryKey> Open(std::wstring_view path) { return scan_.Open(root_, path); }

  // Environment strings expanded, so that a command written with
  // %ProgramFiles% is matched too.
  std::wstring Text(const IRegistryKey& key, std::wstring_view name) {
    auto value = key.ReadValue(name);
    if (!value) return {};
    auto text = RegValueText(*value);
    if (value->type == RegType::ExpandString && text.find(L'%') != std::wstring::npos) {
      if (auto expanded = scan_.Machine().system.ExpandEnvironment(text)) text = *expanded;
    }
    return text;
  }
  std::wstring DefaultOf(std::wstring_view path) {
    auto key = Open(path);
    return key ? Text(*key, L"") : std::wstring();
  }
  // A folder written without its trailing "\" is the folder too.
  bool Refers(std::wstring text) {
    if (text.empty()) return false;
    if (text.back() != L'\\') text += L'\\';
    return scan_.TextHasInstallFolder(text);
  }
  // A handler naming a class that is registered nowhere any more belongs to
  // no other program: typically the program's own, removed by its uninstaller.
  bool Dangling(const std::wstring& handler) {
    if (!LooksLikeClassId(handler)) return false;
    return !scan_.KeyExists(RegRoot::LocalMachine, L"\\SOFTWARE\\Classes\\CLSID\\" + handler) &&
           !scan_.KeyExists(RegRoot::CurrentUser, L"\\Software\\Classes\\CLSID\\" + handler);
  }
  bool IsProgramClass(std::wstring_view name) {
    return !name.empty() && (found_.Category(ScanCategory::ProgIdMachine).Contains(name) ||
                             found_.Category(ScanCategory::FileClassMachine).Contains(name) ||
                             found_.Category(ScanCategory::ExtensionUser).Contains(name));
  }

  void SurveyTree(const std::wstring& path, const IRegistryKey& key, std::wstring_view name,
                  Survey& survey, int depth = 0) {
    if (IsProgramClassId(found_, name)) survey.programClass = true;
    for (const auto& valueName : key.ValueNames()) {
      auto text = Text(key, valueName);
      if (text.empty()) continue;
      survey.content = true;
      if (Refers(text)) survey.refers = true;
      if (LooksLikeClassId(text) && IsProgramClassId(found_, text)) survey.programClass = true;
    }
    if (depth >= kMaxDepth) return;
    for (const auto& sub : key.SubKeyNames()) {
      auto subPath = Join(path, sub);
      if (auto child = Open(subPath)) SurveyTree(subPath, *child, sub, survey, depth + 1);
    }
  }
  Survey SurveyOf(const std::wstring& path, std::wstring_view name) {
    Survey survey;
    if (auto key = Open(path)) SurveyTree(path, *key, name, survey);
    return survey;
  }

  // Each verb of a "shell" key is the program's when something in it names
  // the folder or one of the program's classes (a DelegateExecute, say).
  void Verbs(const std::wstring& shellPath, const std::wstring& relative, Verdict& verdict) {
    auto shell = Open(shellPath);
    if (!shell) return;
    for (const auto& verb : shell->SubKeyNames()) {
      auto survey = SurveyOf(Join(shellPath, verb), verb);
      if (survey.Ours()) {
        verdict.ours = true;
        verdict.keys.push_back(Join(relative, verb));
      } else if (survey.content) {
        verdict.foreign = true;
      }
    }
  }

  // One entry of a "shellex" key: a handler type such as ContextMenuHandlers
  // holding named handlers, or a handler itself ({interface} = {class}).
  void HandlerType(const std::wstring& typePath, const std::wstring& relative,
                   std::wstring_view type, Verdict& verdict) {
    auto key = Open(typePath);
    if (!key) return;
    const auto handler = Text(*key, L"");
    if (IsProgramClassId(found_, type) || IsProgramClassId(found_, handler) || Refers(handler)) {
      verdict.ours = true;
      verdict.keys.push_back(relative);
      return;
    }
    if (!handler.empty() && !Dangling(handler)) verdict.foreign = true;
    for (const auto& name : key->SubKeyNames()) {
      auto survey = SurveyOf(Join(typePath, name), name);
      if (survey.Ours()) {
        verdict.ours = true;
        verdict.keys.push_back(Join(relative, name));
      } else if (survey.content ? !Dangling(DefaultOf(Join(typePath, name)))
                                : LooksLikeClassId(name) && !Dangling(name)) {
        verdict.foreign = true;
      }
    }
  }
  void Handlers(const std::wstring& shellexPath, const std::wstring& relative, Verdict& verdict) {
    auto shellex = Open(shellexPath);
    if (!shellex) return;
    for (const auto& type : shellex->SubKeyNames())
      HandlerType(Join(shellexPath, type), Join(relative, type), type, verdict);
  }

  // A class (ProgID, file type, URL protocol) or, with `extension`, a ".ext" key.
  Verdict Analyse(const std::wstring& path, bool extension) {
    Verdict verdict;
    auto key = Open(path);
    if (!key) return verdict;
    if (extension) {
      const auto progId = ReadValueText(*key, L"");
      if (IsProgramClass(progId))
        verdict.ours = true;
      else if (!progId.empty())
        verdict.foreign = true;
    }
    for (const auto& sub : key->SubKeyNames()) {
      const auto subPath = Join(path, sub);
      if (text::SameText(sub, L"shell")) {
        Verbs(subPath, sub, verdict);
      } else if (text::SameText(sub, L"shellex")) {
        Handlers(subPath, sub, verdict);
      } else if (text::SameText(sub, L"CLSID") || text::SameText(sub, L"PersistentHandler")) {
        const auto id = DefaultOf(subPath);
        if (IsProgramClassId(found_, id)) {
          verdict.ours = true;
          if (!extension && text::SameText(sub, L"CLSID")) verdict.owned = true;
        } else if (!id.empty()) {
          verdict.foreign = true;
        }
      } else if (text::SameText(sub, L"CurVer")) {
        const auto current = DefaultOf(subPath);
        if (IsProgramClass(current)) {
          verdict.ours = true;
          verdict.owned = !extension;
        } else {
          verdict.curVer = current;
        }
      } else if (text::SameText(sub, L"DefaultIcon")) {
        if (Refers(DefaultOf(subPath))) verdict.ours = true;
      } else if (text::SameText(sub, L"ShellNew")) {
        if (SurveyOf(subPath, sub).Ours()) {
          verdict.ours = true;
          verdict.keys.push_back(sub);
        }
      } else if (extension && text::SameText(sub, L"OpenWithProgids")) {
        OpenWith(subPath, sub, verdict);
      } else if (!extension && text::SameText(sub, L"Background")) {
        // Directory\Background and the like: verbs of the folder's empty area.
        auto inner = Analyse(subPath, false);
        verdict.ours |= inner.ours;
        verdict.foreign |= inner.foreign;
        for (auto& k : inner.keys) verdict.keys.push_back(Join(sub, k));
      }
    }
    // Values beside the default (Content Type, PerceivedType) mark a type
    // that Windows or another program defined; the key then stays.
    if (extension && verdict.ours && !verdict.foreign) {
      for (const auto& name : key->ValueNames())
        if (!name.empty()) verdict.foreign = true;
    }
    return verdict;
  }

 private:
  void OpenWith(const std::wstring& path, const std::wstring& relative, Verdict& verdict) {
    auto key = Open(path);
    if (!key) return;
    for (const auto& name : key->ValueNames()) {
      if (name.empty()) continue;
      if (IsProgramClass(name)) {
        verdict.ours = true;
        verdict.values.push_back({relative, name, ReadValueText(*key, name)});
      } else {
        verdict.foreign = true;
      }
    }
  }

  const ScanContext& scan_;
  const ScanSink& found_;
  RegRoot root_;
};

// Where the keys of one walk lie and are filed.
struct Store {
  RegRoot root;
  std::wstring_view base;
  ScanCategory category;
  bool mirrored;  // HKLM keys are shown under HKEY_CLASSES_ROOT as well
};

void AddStoreKey(ScanSink& out, const Store& store, const std::wstring& name) {
  const auto path = Join(store.base, name);
  out.AddKey(store.category, store.root, true, name, path);
  if (store.mirrored)
    out.AddKey(ScanCategory::FileClassClassesRoot, RegRoot::ClassesRoot, true, name,
               ClassesRootMirror(path));
}

// `name` is relative to the store's base ("Acme.Document", ".acme",
// "Applications\acme.exe").
void Report(ScanSink& out, const Store& store, const std::wstring& name, const Verdict& verdict,
            bool shared) {
  if (!verdict.ours) return;
  if ((verdict.owned || !verdict.foreign) && !shared) {
    AddStoreKey(out, store, name);
    return;
  }
  for (const auto& key : verdict.keys) AddStoreKey(out, store, Join(name, key));
  for (const auto& value : verdict.values)
    out.AddValue(nullptr, store.root, Join(Join(store.base, name), value.key), value.name,
                 value.data);
}

struct Pending {
  std::wstring name;
  Verdict verdict;
};

// False when a stop was requested.
bool WalkClasses(const ScanContext& scan, ScanSink& out, ClassReader& reader, const Store& store,
                 const std::vector<std::wstring>& names, bool skipAllFiles) {
  std::vector<Pending> pending;
  auto visit = [&](const std::wstring& name, bool shared) {
    auto verdict = reader.Analyse(Join(store.base, name), false);
    if (verdict.ours)
      Report(out, store, name, verdict, shared);
    else if (!verdict.foreign && !verdict.curVer.empty() && !shared)
      pending.push_back({name, std::move(verdict)});
  };
  for (const auto& name : names) {
    if (!scan.Step()) return false;
    if (name.starts_with(L'.') || IsStructuralClassesKey(name)) continue;
    if (skipAllFiles && name == L"*") continue;
    // A ProgID of one of the program's classes is reported with the class.
    if (store.root == RegRoot::LocalMachine &&
        out.Category(ScanCategory::ProgIdMachine).Contains(name))
      continue;
    // Per-program keys one level down.
    if (text::SameText(name, L"Applications") || text::SameText(name, L"SystemFileAssociations")) {
      const bool shared = text::SameText(name, L"SystemFileAssociations");
      auto container = reader.Open(Join(store.base, name));
      if (!container) continue;
      for (const auto& inner : container->SubKeyNames()) {
        if (!scan.Step()) return false;
        visit(Join(name, inner), shared);
      }
      continue;
    }
    visit(name, IsSharedFileClass(name));
  }
  // A version-independent class walked before its current version was known.
  for (auto& item : pending) {
    if (!reader.IsProgramClass(item.verdict.curVer)) continue;
    item.verdict.ours = item.verdict.owned = true;
    Report(out, store, item.name, item.verdict, false);
  }
  return true;
}

bool WalkExtensions(const ScanContext& scan, ScanSink& out, ClassReader& reader, const Store& store,
                    const std::vector<std::wstring>& names) {
  for (const auto& name : names) {
    if (!scan.Step()) return false;
    if (!name.starts_with(L'.')) continue;
    auto verdict = reader.Analyse(Join(store.base, name), true);
    Report(out, store, name, verdict, false);
  }
  return true;
}

// The user's own COM classes, which no machine-wide step looks at.
bool UserClassIds(const ScanContext& scan, ScanSink& out) {
  const std::wstring base = Join(kUserClasses, L"CLSID");
  auto list = scan.Open(RegRoot::CurrentUser, base);
  if (!list) return true;
  for (const auto& id : list->SubKeyNames()) {
    if (!scan.Step()) return false;
    const auto path = Join(base, id);
    auto key = scan.Open(RegRoot::CurrentUser, path);
    if (!key) continue;
    const auto subKeys = key->SubKeyNames();
    for (std::wstring_view server : {L"InprocServer32", L"LocalServer32"}) {
      auto name = FindName(subKeys, server);
      if (name.empty()) continue;
      auto serverKey = scan.Open(RegRoot::CurrentUser, Join(path, name));
      if (serverKey && scan.ServerTextMatches(ReadValueText(*serverKey, L""))) {
        out.AddKey(ScanCategory::ClsidUser, RegRoot::CurrentUser, true, id, path);
        break;
      }
    }
  }
  return true;
}

std::vector<std::wstring> SubKeysOf(const ScanContext& scan, RegRoot root, std::wstring_view path) {
  auto key = scan.Open(root, path);
  return key ? key->SubKeyNames() : std::vector<std::wstring>();
}

}  // namespace

void FileClasses(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  ClassReader reader(scan, out, RegRoot::LocalMachine);
  const Store store{RegRoot::LocalMachine, kMachineClasses, ScanCategory::FileClassMachine, true};
  WalkClasses(scan, out, reader, store, SubKeysOf(scan, RegRoot::LocalMachine, kMachineClasses),
              true);
}

void Extensions(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  // The user's classes first, as the user's extensions may name them.
  if (!UserClassIds(scan, out)) return;
  ClassReader user(scan, out, RegRoot::CurrentUser);
  const Store userStore{RegRoot::CurrentUser, kUserClasses, ScanCategory::ExtensionUser, false};
  const auto userNames = SubKeysOf(scan, RegRoot::CurrentUser, kUserClasses);
  if (!WalkClasses(scan, out, user, userStore, userNames, false)) return;
  if (!WalkExtensions(scan, out, user, userStore, userNames)) return;
  ClassReader machine(scan, out, RegRoot::LocalMachine);
  const Store machineStore{RegRoot::LocalMachine, kMachineClasses, ScanCategory::ExtensionMachine,
                           true};
  WalkExtensions(scan, out, machine, machineStore,
                 SubKeysOf(scan, RegRoot::LocalMachine, kMachineClasses));
}

void AllFilesVerbs(const ScanContext& scan, ScanSink& out) {
  if (scan.InstallFolder().empty()) return;
  ClassReader reader(scan, out, RegRoot::LocalMachine);
  auto report = [&](ScanCategory category, const std::wstring& path) {
    out.AddKey(category, RegRoot::LocalMachine, true, path, path);
    const auto mirror = ClassesRootMirror(path);
    out.AddKey(category, RegRoot::ClassesRoot, true, mirror, mirror);
  };
  const auto shellPath = Join(kMachineClasses, L"*\\shell");
  for (const auto& verb : SubKeysOf(scan, RegRoot::LocalMachine, shellPath)) {
    if (!scan.Step()) return;
    const auto path = Join(shellPath, verb);
    if (reader.SurveyOf(path, verb).Ours()) report(ScanCategory::AllFilesShell, path);
  }
  const auto shellexPath = Join(kMachineClasses, L"*\\shellex");
  for (const auto& type : SubKeysOf(scan, RegRoot::LocalMachine, shellexPath)) {
    if (!scan.Step()) return;
    Verdict verdict;
    reader.HandlerType(Join(shellexPath, type), type, type, verdict);
    for (const auto& key : verdict.keys)
      report(ScanCategory::AllFilesShellex, Join(shellexPath, key));
  }
}

}  // namespace varnel::scan
