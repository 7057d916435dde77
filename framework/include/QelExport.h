// Symbol visibility of the two shared libraries.
//
// Both libraries are built with hidden default visibility; only what is
// marked here is part of their ABI. Consumers see the same attribute, which
// is harmless for declarations.
#ifndef QEL_EXPORT_H
#define QEL_EXPORT_H

#if defined(__GNUC__) || defined(__clang__)
#define QEL_FRAMEWORK_API __attribute__((visibility("default")))
#define QEL_SOMIF_API __attribute__((visibility("default")))
#else
#define QEL_FRAMEWORK_API
#define QEL_SOMIF_API
#endif

#endif  // QEL_EXPORT_H
