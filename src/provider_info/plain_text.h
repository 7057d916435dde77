// The plain-name layout of provider-management replies, as the service
// writes them and both readers of CProviderManageInfo take them: a provider
// header item, the provider's fields, a "DeviceInfo" (or "ToolInfo") header
// item before every device (tool), and every nested list announced once by a
// header item named after it (written even for an empty list, so that the
// forward-searching reader never runs into the next element's list),
// followed by its elements' items with plain field names. The headers of
// empty lists that would end the text are left out: with nothing readable
// after them, the record reader would read one empty element.
//
// The device header also ends the run of dependency items that the
// property-object reader takes in any order. Between two modules there is
// no such stop: when a module's last repository entry has a non-empty
// "DependencyInfoOther" list, that reader takes the next module's leading
// items as further dependency fields (the record reader is not affected).
#ifndef QEL_SRC_PROVIDER_INFO_PLAIN_TEXT_H
#define QEL_SRC_PROVIDER_INFO_PLAIN_TEXT_H

#include <string>

#include "ProviderManageRecords.h"

namespace qel {
namespace pm {

void WritePlainText(const CVelmora_DevProviderManageInfo& info, std::string& out);
void WritePlainText(const CVelmora_ToolProviderManageInfo& info, std::string& out);

}  // namespace pm
}  // namespace qel

#endif  // QEL_SRC_PROVIDER_INFO_PLAIN_TEXT_H
