// CStringUtil: small string helpers of the framework (ASCII case mapping and
// replacement). All functions are pure and thread-safe.
#ifndef QEL_CSTRINGUTIL_H
#define QEL_CSTRINGUTIL_H

#include <string>

#include "QelExport.h"

class QEL_FRAMEWORK_API CStringUtil {
  public:
    static std::string StringToUpperCase(std::string text);
    static std::string StringToLowerCase(std::string text);
    // Every non-overlapping occurrence of `from`, left to right, replaced by
    // `to`. An empty `from` leaves the text unchanged.
    static std::string ReplaceAll(std::string text, const std::string& from, const std::string& to);
};

#endif  // QEL_CSTRINGUTIL_H
