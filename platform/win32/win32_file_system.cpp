#include "platform/win32/win32_file_system.h"

#include <windows.h>

#include <algorithm>
#include <exception>

#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

namespace {

// ReadFile/WriteFile take a DWORD count; stay well inside it.
constexpr std::size_t kIoChunk = 1u << 30;

// The find record and the attribute record share these fields.
template <typename Data>
FindEntry EntryOf(const Data& data) {
  FindEntry entry;
  entry.attributes = data.dwFileAttributes;
  entry.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  entry.creationTime = ToFileTime(data.ftCreationTime);
  entry.lastAccessTime = ToFileTime(data.ftLastAccessTime);
  entry.lastWriteTime = ToFileTime(data.ftLastWriteTime);
  return entry;
}

FindEntry ToEntry(const WIN32_FIND_DATAW& data) {
  FindEntry entry = EntryOf(data);
  entry.name = data.cFileName;
  entry.shortName = data.cAlternateFileName;
  return entry;
}

template <typename Call>
std::wstring PathQuery(std::wstring_view path, Call call) {
  auto apiPath = ApiPath(path);
  if (!apiPath || apiPath->empty()) return {};
  // Wine answers a "\\?\" path by echoing it, whether it exists or not.
  if (GetFileAttributesW(apiPath->c_str()) == INVALID_FILE_ATTRIBUTES) return {};
  std::wstring result(MAX_PATH, L'\0');
  // The answer can change size between calls (a rename), hence the loop.
  for (int attempt = 0; attempt < 4; ++attempt) {
    DWORD length = call(apiPath->c_str(), result.data(), static_cast<DWORD>(result.size()));
    if (length == 0) return {};
    if (length < result.size()) {
      result.resize(length);
      return PlainPath(std::move(result), path);
    }
    result.resize(length);
  }
  return {};
}

// Shared with writers and deleters, as a reader should be.
UniqueFile OpenForReading(std::wstring_view path, DWORD flags) {
  auto apiPath = ApiPath(path);
  if (!apiPath || apiPath->empty()) return UniqueFile();
  return UniqueFile(CreateFileW(apiPath->c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, flags, nullptr));
}

// Fills `data` from the file's current position, ending early at its end.
bool Fill(HANDLE file, std::vector<std::uint8_t>& data) {
  std::size_t filled = 0;
  while (filled < data.size()) {
    DWORD want = static_cast<DWORD>(std::min(data.size() - filled, kIoChunk));
    DWORD got = 0;
    if (!ReadFile(file, data.data() + filled, want, &got, nullptr)) return false;
    if (got == 0) break;
    filled += got;
  }
  data.resize(filled);
  return true;
}

std::optional<std::uint64_t> FileSize(HANDLE file) {
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file, &size) || size.QuadPart < 0) return std::nullopt;
  return static_cast<std::uint64_t>(size.QuadPart);
}

bool ReadAll(HANDLE file, std::vector<std::uint8_t>& data) {
  const auto size = FileSize(file);
  if (!size) return false;
  data.resize(static_cast<std::size_t>(*size));
  if (!Fill(file, data)) return false;
  // Someone may have appended since the size was taken.
  std::uint8_t tail[4096];
  for (;;) {
    DWORD got = 0;
    if (!ReadFile(file, tail, sizeof tail, &got, nullptr)) return false;
    if (got == 0) return true;
    data.insert(data.end(), tail, tail + got);
  }
}

}  // namespace

std::optional<std::uint32_t> Win32FileSystem::GetAttributes(std::wstring_view path) {
  auto apiPath = ApiPath(path);
  if (!apiPath) return std::nullopt;
  DWORD attributes = GetFileAttributesW(apiPath->c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
  return attributes;
}

bool Win32FileSystem::SetAttributes(std::wstring_view path, std::uint32_t attributes) {
  auto apiPath = ApiPath(path);
  return apiPath && SetFileAttributesW(apiPath->c_str(), attributes);
}

std::optional<FindEntry> Win32FileSystem::GetFileInfo(std::wstring_view path) {
  auto apiPath = ApiPath(path);
  if (!apiPath || apiPath->empty()) return std::nullopt;
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!GetFileAttributesExW(apiPath->c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
  return EntryOf(data);
}

// FindExInfoStandard rather than Basic: the 8.3 alias comes from the same
// directory record, and callers compare short forms.
bool Win32FileSystem::FindEntries(std::wstring_view pattern, std::vector<FindEntry>& out) {
  out.clear();
  auto apiPattern = ApiPath(pattern);
  if (!apiPattern || apiPattern->empty()) return false;
  WIN32_FIND_DATAW data{};
  UniqueFind find(FindFirstFileExW(apiPattern->c_str(), FindExInfoStandard, &data,
                                   FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
  if (!find) return false;
  try {
    do {
      out.push_back(ToEntry(data));
    } while (FindNextFileW(find.get(), &data));
  } catch (const std::exception&) {
    out.clear();
    return false;
  }
  return true;
}

bool Win32FileSystem::ReadWholeFile(std::wstring_view path, std::vector<std::uint8_t>& out) {
  out.clear();
  UniqueFile file = OpenForReading(path, FILE_FLAG_SEQUENTIAL_SCAN);
  if (!file) return false;
  try {
    if (ReadAll(file.get(), out)) return true;
  } catch (const std::exception&) {
  }
  out.clear();
  return false;
}

bool Win32FileSystem::ReadFilePart(std::wstring_view path, std::uint64_t offset,
                                   std::size_t maxBytes, std::vector<std::uint8_t>& out) {
  out.clear();
  UniqueFile file = OpenForReading(path, 0);
  if (!file) return false;
  const auto total = FileSize(file.get());
  if (!total) return false;
  if (offset >= *total) return true;
  LARGE_INTEGER to{};
  to.QuadPart = static_cast<LONGLONG>(offset);
  if (!SetFilePointerEx(file.get(), to, nullptr, FILE_BEGIN)) return false;
  try {
    out.resize(static_cast<std::size_t>(std::min<std::uint64_t>(maxBytes, *total - offset)));
  } catch (const std::exception&) {
    return false;
  }
  if (Fill(file.get(), out)) return true;
  out.clear();
  return false;
}

bool Win32FileSystem::WriteWholeFile(std::wstring_view path, std::span<const std::uint8_t> bytes) {
  auto apiPath = ApiPath(path);
  if (!apiPath || apiPath->empty()) return false;
  // Windows will not open a read-only file for writing, but a host that
  // maps the flag to permissions lets an administrator through; ask first.
  DWORD existing = GetFileAttributesW(apiPath->c_str());
  if (existing != INVALID_FILE_ATTRIBUTES && (existing & FILE_ATTRIBUTE_READONLY)) {
    SetLastError(ERROR_ACCESS_DENIED);
    return false;
  }
  // OPEN_ALWAYS plus truncation rather than CREATE_ALWAYS, which refuses an
  // existing hidden or system file unless the caller repeats its attributes.
  UniqueFile file(CreateFileW(apiPath->c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return false;
  std::size_t written = 0;
  while (written < bytes.size()) {
    DWORD want = static_cast<DWORD>(std::min(bytes.size() - written, kIoChunk));
    DWORD done = 0;
    if (!WriteFile(file.get(), bytes.data() + written, want, &done, nullptr) || done == 0) {
      return false;
    }
    written += done;
  }
  return SetEndOfFile(file.get()) != FALSE;
}

bool Win32FileSystem::RemoveFile(std::wstring_view path) {
  auto apiPath = ApiPath(path);
  return apiPath && !apiPath->empty() && DeleteFileW(apiPath->c_str());
}

bool Win32FileSystem::MakeDirectory(std::wstring_view path) {
  auto apiPath = ApiPath(path);
  return apiPath && !apiPath->empty() && CreateDirectoryW(apiPath->c_str(), nullptr);
}

bool Win32FileSystem::RemoveFolder(std::wstring_view path) {
  auto apiPath = ApiPath(path);
  return apiPath && !apiPath->empty() && RemoveDirectoryW(apiPath->c_str());
}

bool Win32FileSystem::MoveEntry(std::wstring_view from, std::wstring_view to) {
  auto apiFrom = ApiPath(from);
  auto apiTo = ApiPath(to);
  if (!apiFrom || !apiTo || apiFrom->empty() || apiTo->empty()) return false;
  return MoveFileExW(apiFrom->c_str(), apiTo->c_str(), MOVEFILE_COPY_ALLOWED);
}

bool Win32FileSystem::ReplaceEntry(std::wstring_view from, std::wstring_view to) {
  auto apiFrom = ApiPath(from);
  auto apiTo = ApiPath(to);
  if (!apiFrom || !apiTo || apiFrom->empty() || apiTo->empty()) return false;
  const DWORD existing = GetFileAttributesW(apiTo->c_str());
  if (existing != INVALID_FILE_ATTRIBUTES &&
      (existing & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY))) {
    SetLastError(ERROR_ACCESS_DENIED);
    return false;
  }
  {
    // The rename is journalled; the data it points at must be on the disk
    // before it, or a crash leaves a replaced file with nothing in it.
    UniqueFile file(CreateFileW(apiFrom->c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file || !FlushFileBuffers(file.get())) return false;
  }
  return MoveFileExW(apiFrom->c_str(), apiTo->c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
}

std::wstring Win32FileSystem::LongPathName(std::wstring_view path) {
  return PathQuery(path, [](const wchar_t* in, wchar_t* out, DWORD size) {
    return GetLongPathNameW(in, out, size);
  });
}

std::wstring Win32FileSystem::ShortPathName(std::wstring_view path) {
  return PathQuery(path, [](const wchar_t* in, wchar_t* out, DWORD size) {
    return GetShortPathNameW(in, out, size);
  });
}

bool Win32FileSystem::MoveOnReboot(std::wstring_view from, std::wstring_view to) {
  auto apiFrom = ApiPath(from);
  auto apiTo = ApiPath(to);
  if (!apiFrom || !apiTo || apiFrom->empty()) return false;
  return MoveFileExW(apiFrom->c_str(), apiTo->empty() ? nullptr : apiTo->c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_DELAY_UNTIL_REBOOT);
}

}  // namespace varnel::win32
