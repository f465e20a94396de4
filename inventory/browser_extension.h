#pragma once

#include <string>
#include <vector>

namespace varnel {

// How an extension is installed, which decides how it is removed.
enum class ExtensionPackage {
  FirefoxManifest,  // a legacy add-on folder: `path` is its install.rdf
  FirefoxPackage,   // an add-on of extensions.json: `path` is its .xpi or folder
  Chromium,         // `path` is Extensions\<id>\<version> of the profile
};

// One extension of one browser profile, toolbar or not.
struct BrowserExtension {
  std::wstring browser;  // "Firefox", "Chrome", "Edge", "Brave", "Vivaldi", "Opera"
  std::wstring profile;  // the profile's folder
  std::wstring id;
  std::wstring name;
  std::wstring version;
  bool enabled = true;
  std::wstring path;
  ExtensionPackage package = ExtensionPackage::FirefoxManifest;
  // Chromium: put there by an external registry key or JSON file rather than
  // installed in the browser, so removing its files and registration is safe.
  bool external = false;
};

using BrowserExtensions = std::vector<BrowserExtension>;

}  // namespace varnel
