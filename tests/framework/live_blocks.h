// The heap blocks that operator new has handed out and delete has not taken
// back, over the whole test binary (libraries included): a test compares the
// count before and after a scope to see a leak that only a leak checker
// would otherwise report. Link live_blocks.cpp into the binary to use it.
#ifndef QEL_TESTS_FRAMEWORK_LIVE_BLOCKS_H
#define QEL_TESTS_FRAMEWORK_LIVE_BLOCKS_H

namespace qel_test {

long LiveBlocks();

// The blocks that a second run of `body` leaves behind; the first run warms
// up function-local statics and caches.
template <class Body>
long BlocksLeftBy(const Body& body) {
    body();
    const long before = LiveBlocks();
    body();
    return LiveBlocks() - before;
}

}  // namespace qel_test

#endif  // QEL_TESTS_FRAMEWORK_LIVE_BLOCKS_H
