#include "framework/live_blocks.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> g_liveBlocks{0};
}  // namespace

long qel_test::LiveBlocks() {
    return g_liveBlocks.load();
}

void* operator new(std::size_t size) {
    if (void* block = std::malloc(size != 0 ? size : 1)) {
        ++g_liveBlocks;
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        --g_liveBlocks;
        std::free(block);
    }
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
