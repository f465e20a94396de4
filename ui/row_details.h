#pragma once

#include <string>

#include "ui/software_rows.h"

namespace varnel {

// What the details panel shows for the selected row.
struct RowDetails {
  bool idlePicture = true;  // no selection: only the idle picture shows
  std::wstring name, version, publisher, helpInfo;
  int image = 0;
  bool showVersion = false, showPublisher = false, showHelpInfo = false;
  bool helpIsLink = false;  // underlined, hand cursor
};

RowDetails DetailsOf(const SoftRow* selected);

}  // namespace varnel
