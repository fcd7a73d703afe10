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
    // each other and free nothing but themselves), but it mirrors creation.
    while (!nodes_.empty()) nodes_.pop_back();
}

void Arena::adopt(std::unique_ptr<Node> node) {
    if (lock_) {
        std::lock_guard<std::mutex> guard(*lock_);
        nodes_.push_back(std::move(node));
        return;
    }
    nodes_.push_back(std::move(node));
}

std::size_t Arena::size() const {
    if (lock_) {
        std::lock_guard<std::mutex> guard(*lock_);
        return nodes_.size();
    }
    return nodes_.size();
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
