#include "inventory/install_rdf.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "base/text.h"

namespace varnel {
namespace {

constexpr int kManifestOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
constexpr const char* kEmNamespace = "http://www.mozilla.org/2004/em-rdf#";

struct DocFree {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};

bool Is(const xmlChar* text, const char* expected) {
  return text && std::strcmp(reinterpret_cast<const char*>(text), expected) == 0;
}

// "em:name" as written, or "name" in the manifest namespace under another prefix.
bool IsEmName(const xmlNode* node) {
  if (node->type != XML_ELEMENT_NODE || !Is(node->name, "name") || !node->ns) return false;
  return Is(node->ns->prefix, "em") || Is(node->ns->href, kEmNamespace);
}

// Only text the manifest holds itself: entity references stay unfollowed.
std::string OwnText(const xmlNode* element) {
  std::string out;
  for (const xmlNode* n = element->children; n; n = n->next) {
    if ((n->type == XML_TEXT_NODE || n->type == XML_CDATA_SECTION_NODE) && n->content)
      out += reinterpret_cast<const char*>(n->content);
  }
  return out;
}

// Document order without recursion: the parser's depth limit bounds the
// tree, but the walk need not rely on it.
const xmlNode* FirstEmName(const xmlNode* root) {
  const xmlNode* node = root;
  while (node) {
    if (IsEmName(node)) return node;
    if (node->children && node->type == XML_ELEMENT_NODE) {
      node = node->children;
      continue;
    }
    while (node && !node->next && node != root) node = node->parent;
    if (!node || node == root) return nullptr;
    node = node->next;
  }
  return nullptr;
}

}  // namespace

std::wstring ReadAddonName(std::span<const std::uint8_t> manifest) {
  if (manifest.empty() || manifest.size() > INT_MAX) return {};
  std::unique_ptr<xmlDoc, DocFree> doc(
      xmlReadMemory(reinterpret_cast<const char*>(manifest.data()),
                    static_cast<int>(manifest.size()), "install.rdf", nullptr, kManifestOptions));
  if (!doc) return {};
  const xmlNode* root = xmlDocGetRootElement(doc.get());
  const xmlNode* name = root ? FirstEmName(root) : nullptr;
  return name ? text::Trim(text::FromUtf8(OwnText(name))) : std::wstring();
}

std::wstring ReadAddonName(IFileSystem& files, std::wstring_view manifestPath) {
  std::vector<std::uint8_t> bytes;
  if (!files.ReadWholeFile(manifestPath, bytes)) return {};
  return ReadAddonName(bytes);
}

}  // namespace varnel
