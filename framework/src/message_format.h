// What the framework itself must know of the SOM service's messages: the
// header's fixed-width fields and the items whose values are secrets.
//
// The transport sizes a reply from the header's last field and the exchange
// recorder splits and masks messages, both below the library's own protocol
// header (src/common/protocol.h), which takes these facts from here so that
// each is written down once.
#ifndef QEL_FRAMEWORK_SRC_MESSAGE_FORMAT_H
#define QEL_FRAMEWORK_SRC_MESSAGE_FORMAT_H

#include "CFileTransfer.h"

namespace qel {
namespace message_format {

// Header: length "%08d", magic "%08lx", class "/" method, result field,
// body length "%08u". Every numeric field is this wide.
constexpr int kFieldWidth = CFileTransfer::kLengthFieldWidth;
// Header length, magic, "/", result field and body length: the header's
// length without its class and method names.
constexpr int kHeaderFixedLength = 4 * kFieldWidth + 1;
// The two fields in front of the class name: header length and magic.
constexpr int kLeadingFieldsLength = 2 * kFieldWidth;
// From the first digit of the result field to the body: result field and
// body-length field.
constexpr int kTrailingFieldsLength = 2 * kFieldWidth;
constexpr char kClassMethodSeparator = '/';
// The body-length field as the service and the recorder write it.
constexpr const char kBodyLengthFormat[] = "%08zu";

// Items whose values are passwords: masked in recordings and on screen.
constexpr const char kProxyPassword[] = "ProxyPassword";
constexpr const char kCacheServerPassword[] = "CacheServerPassword";
constexpr const char* const kSecretItems[] = {kProxyPassword, kCacheServerPassword};

}  // namespace message_format
}  // namespace qel

#endif  // QEL_FRAMEWORK_SRC_MESSAGE_FORMAT_H
