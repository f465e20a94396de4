#pragma once

#include <memory>
#include <string_view>

#include "inventory/browser_extension.h"
#include "inventory/soft_list.h"
#include "inventory/software_info.h"
#include "platform/platform.h"

namespace varnel {

// Appends the browser toolbars registered in one registry view, and in the
// default view's pass the browser add-ons whose names say "toolbar"; then
// hides a toolbar that a later one repeats (same class id and file).
void DiscoverToolbars(const Platform& platform, SoftList& list, bool use64BitView);

// What the inventory runs unless it is handed another discovery.
ToolbarDiscovery DefaultToolbarDiscovery(const Platform& platform);

// The word, in any case, that makes an add-on a toolbar record.
bool IsToolbarName(std::wstring_view name);

// The toolbar record of an add-on: "<name> (<browser>)", its package as the
// toolbar file; the browser, id and profile kept in the three free strings.
std::unique_ptr<TSoftInfo> AddonToolbarRecord(const BrowserExtension& extension, TDateTime now);

}  // namespace varnel
