#include "host/arena.h"

#include <atomic>

namespace cmpihost::detail {

namespace {
thread_local Arena *tCurrent = nullptr;
std::atomic<std::size_t> gLiveNodes{0};
}  // namespace

Node::Node() {
    gLiveNodes.fetch_add(1, std::memory_order_relaxed);
}
Node::~Node() {
    gLiveNodes.fetch_sub(1, std::memory_order_relaxed);
}
std::size_t liveNodes() {
    return gLiveNodes.load(std::memory_order_relaxed);
}

Arena::Arena(bool shared) : lock_(shared ? std::make_unique<std::mutex>() : nullptr) {}

Arena::~Arena() {
    // Newest first: nothing depends on that (nodes hold only raw pointers to
    // each other and free nothing but what they own), but it mirrors
    // creation. Their memory goes with region_.
    while (newest_ != nullptr) {
        Node *node = newest_;
        newest_ = node->previous;
        node->~Node();
    }
}

void *Arena::allocate(std::size_t bytes, std::size_t alignment) {
    std::unique_lock<std::mutex> guard;
    if (lock_) guard = std::unique_lock<std::mutex>(*lock_);
    return region_.allocate(bytes, alignment);
}

void Arena::adopt(Node *node) {
    std::unique_lock<std::mutex> guard;
    if (lock_) guard = std::unique_lock<std::mutex>(*lock_);
    node->previous = newest_;
    newest_ = node;
    ++count_;
}

std::size_t Arena::size() const {
    std::unique_lock<std::mutex> guard;
    if (lock_) guard = std::unique_lock<std::mutex>(*lock_);
    return count_;
}

Arena &processArena() {
    static Arena arena(true);
    return arena;
}

namespace {
// Made before main, while one thread runs, rather than by whichever thread
// first needs it: the lazy form stays for users in other static initialisers.
[[maybe_unused]] Arena &gProcessArena = processArena();
}  // namespace

Arena &currentArena() {
    return tCurrent ? *tCurrent : processArena();
}

Arena *exchangeCurrent(Arena *next) {
    return std::exchange(tCurrent, next);
}

Arena *explicitCurrent() {
    return tCurrent;
}

}  // namespace cmpihost::detail
