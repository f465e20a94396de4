#include "platform/win32/shell_link_writer.h"

#include <windows.h>

#include <objbase.h>
#include <objidl.h>
#include <shlobj.h>
#include <shobjidl.h>

#include "platform/win32/unique_handle.h"
#include "platform/win32/win32_strings.h"

namespace varnel::win32 {

bool WriteShellLink(std::wstring_view linkPath, const ShellLinkSpec& link) {
  auto path = ApiString(linkPath);
  auto target = ApiString(link.target);
  auto arguments = ApiString(link.arguments);
  auto directory = ApiString(link.workingDirectory);
  auto description = ApiString(link.description);
  if (!path || !target || !arguments || !directory || !description || path->empty()) {
    return false;
  }
  ComScope com;
  UniqueCom<IShellLinkW> shellLink;
  if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                              reinterpret_cast<void**>(shellLink.put())))) {
    return false;
  }
  if (FAILED(shellLink.get()->SetPath(target->c_str()))) return false;
  if (!arguments->empty() && FAILED(shellLink.get()->SetArguments(arguments->c_str()))) {
    return false;
  }
  if (!directory->empty() && FAILED(shellLink.get()->SetWorkingDirectory(directory->c_str()))) {
    return false;
  }
  if (!description->empty() && FAILED(shellLink.get()->SetDescription(description->c_str()))) {
    return false;
  }
  UniqueCom<IPersistFile> file;
  if (FAILED(shellLink.get()->QueryInterface(IID_IPersistFile,
                                             reinterpret_cast<void**>(file.put())))) {
    return false;
  }
  return SUCCEEDED(file.get()->Save(path->c_str(), TRUE));
}

}  // namespace varnel::win32
