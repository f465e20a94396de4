#include "ui/row_details.h"

namespace varnel {

RowDetails DetailsOf(const SoftRow* selected) {
  RowDetails details;
  if (!selected) return details;
  details.idlePicture = false;
  details.name = selected->caption;
  details.version = selected->sub[SubItem::Version];
  details.publisher = selected->sub[SubItem::Publisher];
  details.helpInfo = selected->sub[SubItem::HelpLink];
  details.image = selected->image;
  details.showVersion = !details.version.empty();
  details.showPublisher = !details.publisher.empty();
  details.showHelpInfo = !details.helpInfo.empty();
  details.helpIsLink = details.helpInfo != L"-";
  return details;
}

}  // namespace varnel
