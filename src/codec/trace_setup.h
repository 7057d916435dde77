// The trace settings that every codec object needs, read once per process.
#ifndef QEL_SRC_CODEC_TRACE_SETUP_H
#define QEL_SRC_CODEC_TRACE_SETUP_H

#include <string>

#include "CTraceUtility.h"

namespace qel {

// The first codec constructed reads QEL_TRACE and opens the trace file with
// every level allowed; later ones leave the settings alone, so constructing a
// codec costs no lock and no environment read. Whoever changes QEL_TRACE
// afterwards calls CTraceUtility::Initialize, as before.
inline void InitializeTraceOnce(const std::string& traceName) {
    static const bool initialized = (CTraceUtility::Initialize(traceName, 0xFFFFFFFFu), true);
    (void)initialized;
}

}  // namespace qel

#endif  // QEL_SRC_CODEC_TRACE_SETUP_H
