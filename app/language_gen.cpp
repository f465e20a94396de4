// Writes the shipped language files from the program's built-in texts, or
// checks that the shipped ones still match them:
//
//   varnel_lang_gen write|check FOLDER
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "base/text.h"
#include "base/text_file.h"
#include "ui/language_catalog.h"

namespace {

std::string FileBytes(varnel::CatalogLanguage language) {
  const auto bytes = varnel::EncodeUtf8WithBom(varnel::LanguageFileText(language));
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || (std::string(argv[1]) != "write" && std::string(argv[1]) != "check")) {
    std::fprintf(stderr, "usage: varnel_lang_gen write|check FOLDER\n");
    return 2;
  }
  const bool write = std::string(argv[1]) == "write";
  int failed = 0;
  const std::pair<const char*, varnel::CatalogLanguage> files[] = {
      {"English.lng", varnel::CatalogLanguage::English},
      {"German.lng", varnel::CatalogLanguage::German}};
  for (const auto& [name, language] : files) {
    const std::string path = std::string(argv[2]) + "/" + name;
    const std::string expected = FileBytes(language);
    if (write) {
      std::ofstream out(path, std::ios::binary);
      out << expected;
      if (!out) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        ++failed;
      }
      continue;
    }
    std::ifstream in(path, std::ios::binary);
    const std::string actual((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (actual != expected) {
      std::printf("FAILED %s differs from the built-in texts; run varnel_lang_gen write\n",
                  path.c_str());
      ++failed;
    } else {
      std::printf("ok %s\n", path.c_str());
    }
  }
  if (!write) {
    if (failed)
      std::printf("[  FAILED  ] %d of 2 checks.\n", failed);
    else
      std::printf("[  PASSED  ] 2 checks.\n");
  }
  return failed ? 1 : 0;
}
