// Basic types shared by the framework and the SOM client library.
#ifndef QEL_TYPES_H
#define QEL_TYPES_H

#include <string>
#include <utility>
#include <vector>

typedef long HRESULT;
typedef long LONG;
typedef char OLECHAR;

// A list of (name, class name) pairs, as service discovery hands them out.
typedef std::vector<std::pair<std::string, std::string>> strpairvect_t;

#endif  // QEL_TYPES_H
