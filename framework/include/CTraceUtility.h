// CTraceUtility: the trace facility shared by every object of the suite.
//
// A trace line has a source (an object's trace name), a level (one bit:
// 1 status, 2 errors, 4 entry/exit, 32 per-element detail) and printf-style
// text. With a sink installed (tests, hosts that route lines elsewhere) every
// call reaches the sink once, fully formatted. Without one, lines go to the
// file that the environment variable QEL_TRACE names ("-" for standard
// error), filtered by the bit mask in QEL_TRACE_LEVEL (default: all levels);
// with neither set, a call returns before any formatting.
//
// All functions may be called from any thread; lines never interleave.
#ifndef QEL_CTRACEUTILITY_H
#define QEL_CTRACEUTILITY_H

#include <functional>
#include <string>

#include "QelExport.h"

class QEL_FRAMEWORK_API CTraceUtility {
  public:
    typedef std::function<void(const std::string& source, int level, const std::string& text)> Sink;

    // Records the caller's name and mode and (re)reads QEL_TRACE and
    // QEL_TRACE_LEVEL. `mode` is a further level mask; all bits set lets
    // every level through. The codecs call it at every construction, so a
    // QEL_TRACE changed in between takes effect; it costs a lock and two
    // environment reads, and keeps the trace file open while its path stays.
    static void Initialize(const std::string& name, unsigned int mode);

    static void WriteDebug(const std::string& source, int level, const char* format, ...)
        __attribute__((format(printf, 3, 4)));

    // Installs (or, with an empty function, removes) the sink. The sink is
    // called under the facility's lock, so it must not trace itself.
    static void SetSink(Sink sink);

    // Whether a line of `level` would be written anywhere now.
    static bool IsEnabled(int level);
};

#endif  // QEL_CTRACEUTILITY_H
