// Owners and walks for what the zoning platform hands back.
//
// Records, arrays and list nodes from the platform belong to the caller and
// are released with free(): an array with one free(), a linked list node by
// node (take the next pointer, clear it, free the node). These owners make
// every path release exactly once.
#pragma once

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/zoning_platform.h"

namespace zone {

// One record (or one array of records) released with a single free().
template <typename T>
class Owned {
  public:
    Owned() = default;
    explicit Owned(T *p) : ptr_(p) {}
    ~Owned() { std::free(ptr_); }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;

    // Address to hand to a platform query; releases what was held and clears
    // it first, so a query that answers without setting it frees nothing twice.
    T **out() {
        std::free(ptr_);
        ptr_ = nullptr;
        return &ptr_;
    }
    T *get() const { return ptr_; }
    T *operator->() const { return ptr_; }
    explicit operator bool() const { return ptr_ != nullptr; }

  private:
    T *ptr_ = nullptr;
};

// Detaches the head node of a linked list: returns the next node after
// clearing the head's next pointer. The caller frees the head.
template <typename T>
T *detach_head(T *head) {
    T *next = head->next;
    head->next = nullptr;
    return next;
}

// A linked list of records released node by node. visit() hands each node,
// in list order, to fn and frees it right after; whatever is left when the
// owner dies is freed the same way.
template <typename T>
class OwnedList {
  public:
    OwnedList() = default;
    ~OwnedList() { release(); }
    OwnedList(const OwnedList &) = delete;
    OwnedList &operator=(const OwnedList &) = delete;

    T **out() {
        release();
        return &head_;
    }
    T *head() const { return head_; }

    template <typename Fn>
    void visit(Fn &&fn) {
        while (head_ != nullptr) {
            T *node = head_;
            head_ = detach_head(node);
            fn(node);
            std::free(node);
        }
    }

    void release() {
        while (head_ != nullptr) {
            T *node = head_;
            head_ = detach_head(node);
            std::free(node);
        }
    }

  private:
    T *head_ = nullptr;
};

// A generic list from cim_g_slist_alloc, destroyed whatever happened.
class OwnedGList {
  public:
    OwnedGList() : list_(cim_g_slist_alloc()) {}
    ~OwnedGList() {
        if (list_ != nullptr) cim_g_slist_destroy(list_);
    }
    OwnedGList(const OwnedGList &) = delete;
    OwnedGList &operator=(const OwnedGList &) = delete;
    cim_g_slist **out() { return &list_; }
    cim_g_slist *get() const { return list_; }

  private:
    cim_g_slist *list_;
};

// Walks every VSAN with vsan_cim_get_vsanEntry in "next" mode, starting from
// VSAN number 0 and ending at the first non-zero answer.
template <typename Fn>
void for_each_vsan(int queue, Fn &&fn) {
    VsanEntry cursor{};
    cursor.vsan = 0;
    while (vsan_cim_get_vsanEntry(queue, ZP_VSAN_NEXT, &cursor) == 0) fn(cursor.vsan);
}

inline bool same_name(const char *a, std::string_view b) {
    return a != nullptr && std::strlen(a) == b.size() && strncasecmp(a, b.data(), b.size()) == 0;
}

inline bool null_or_empty(const char *s) {
    return s == nullptr || *s == '\0';
}

// Copies at most 253 characters and a terminating zero into a 254-byte field.
inline constexpr std::size_t kKeyTextSize = 254;
inline void copy_key_text(char (&field)[kKeyTextSize], const char *text) {
    std::size_t n = 0;
    if (text != nullptr)
        while (n < kKeyTextSize - 1 && text[n] != '\0') ++n;
    if (n > 0) std::memcpy(field, text, n);
    field[n] = '\0';
}

}  // namespace zone
