// Arenas: who owns the CMPI objects the broker makes.
//
// Every object the broker makes is a Node adopted by exactly one Arena and
// destroyed with it, never before: release() on a broker object does
// nothing, so a provider that releases (or forgets to) can neither free
// twice nor leak. A Request owns one arena; the thread's current arena
// (set while a Request lives, or while the host runs a provider operation)
// receives new objects; with none current they go to the process arena,
// destroyed at exit.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace cmpihost::detail {

class Arena;

struct Node {
    Node();
    virtual ~Node();
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;

    Arena *arena = nullptr;    // the arena that owns this node
    Node *previous = nullptr;  // the node the arena adopted before this one
};

// Nodes alive in the process, in every arena.
std::size_t liveNodes();

class Arena {
  public:
    // A shared arena (the process one) may be filled from several threads.
    explicit Arena(bool shared = false);
    ~Arena();
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    template <class T, class... Args>
    T *make(Args &&...args) {
        T *raw = new (allocate(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
        raw->arena = this;
        adopt(raw);
        return raw;
    }

    // Memory that lives exactly as long as the arena; never freed on its own.
    void *allocate(std::size_t bytes, std::size_t alignment);

    std::size_t size() const;

  private:
    void adopt(Node *node);

    // Nodes (and the characters of strings) are carved out of large blocks
    // that go all at once with the arena. A request of a hundred thousand
    // objects made each one a block of the C library's heap before, and
    // freeing them one by one, with the heap sorting through all of them,
    // cost more than making them.
    std::pmr::monotonic_buffer_resource region_;
    // The nodes as a list through Node::previous, newest first.
    Node *newest_ = nullptr;
    std::size_t count_ = 0;
    std::unique_ptr<std::mutex> lock_;  // only for a shared arena
};

Arena &processArena();
// The arena new objects go to on this thread.
Arena &currentArena();
// Makes `next` (may be null: the process arena) current on this thread and
// returns the arena that was current before.
Arena *exchangeCurrent(Arena *next);
// The arena explicitly current on this thread, null when none is.
Arena *explicitCurrent();

// Makes an arena current for a scope, restoring the previous one after.
class CurrentArena {
  public:
    explicit CurrentArena(Arena &arena) : previous_(exchangeCurrent(&arena)) {}
    ~CurrentArena() { exchangeCurrent(previous_); }
    CurrentArena(const CurrentArena &) = delete;
    CurrentArena &operator=(const CurrentArena &) = delete;

  private:
    Arena *previous_;
};

}  // namespace cmpihost::detail
