// Platform records made from the store's objects, every unused byte zero,
// handed to the caller, who frees them: arrays with one free(), lists node
// by node.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/zoning_platform.h"
#include "sim/sim_errors.h"
#include "sim/store.h"

namespace zonesim {

// Copies a text whose length is only known at run time through the C
// library's memcpy: inlined, a copy bounded by a record field became a
// `rep movsq`, slow to start for the few bytes of a name or a number.
[[gnu::noinline]] inline void copyBytes(char *to, const char *from, std::size_t size) {
    std::memcpy(to, from, size);
}

// Clears a block through the C library's memset. Seen right after its
// malloc, an inlined clear is fused by g++ into calloc, which never takes
// the blocks the allocator's per-thread cache of freed ones holds.
[[gnu::noinline]] inline void clearBytes(void *block, std::size_t size) {
    std::memset(block, 0, size);
}

template <std::size_t N>
void copyText(char (&field)[N], std::string_view text) {
    std::size_t n = text.size() < N - 1 ? text.size() : N - 1;
    copyBytes(field, text.data(), n);
    field[n] = '\0';
}

// Writes pieces of text one after the other into a record's text field,
// cutting what doesn't fit at the field's end; finish() ends the text.
template <std::size_t N>
class FieldWriter {
  public:
    explicit FieldWriter(char (&field)[N]) : field_(field) {}
    FieldWriter &text(std::string_view piece) {
        std::size_t n = std::min(piece.size(), room());
        copyBytes(field_ + length_, piece.data(), n);
        length_ += n;
        return *this;
    }
    // A separator spelled in the code (its length known here): a store or
    // two when it fits.
    template <std::size_t M>
    FieldWriter &separator(const char (&piece)[M]) {
        constexpr std::size_t size = M - 1;
        if (size > room()) return text(std::string_view(piece, size));
        std::memcpy(field_ + length_, piece, size);
        length_ += size;
        return *this;
    }
    // Digits go straight into the field when any number fits.
    FieldWriter &number(long long value) {
        constexpr std::size_t kLongest = 20;  // "-9223372036854775808"
        if (room() >= kLongest) {
            auto written = std::to_chars(field_ + length_, field_ + length_ + kLongest, value);
            length_ = static_cast<std::size_t>(written.ptr - field_);
            return *this;
        }
        char digits[24];
        auto written = std::to_chars(digits, digits + sizeof digits, value);
        return text(std::string_view(digits, static_cast<std::size_t>(written.ptr - digits)));
    }
    void finish() { field_[length_] = '\0'; }

  private:
    std::size_t room() const { return N - 1 - length_; }

    char *field_;
    std::size_t length_ = 0;
};

// The InstanceIDs are written straight into the record, in the form of
// ZoningObject::instanceId() and Member::instanceId(): enumerations fill
// tens of thousands of records, and building each text as a string first
// (or through printf) cost as much as the query that found the object.
template <typename Record>
void fillObjectRecord(Record *record, int vsan, int number, bool active, std::string_view name) {
    FieldWriter(record->instance_id)
        .number(vsan)
        .separator("^")
        .number(number)
        .separator(active ? "^1" : "^0")
        .finish();
    copyText(record->name, name);
}

template <typename Record>
void fillRecord(Record *record, const ZoningObject &object) {
    fillObjectRecord(record, object.vsan, object.number, object.active, object.name);
}

inline void fillMemberRecord(ZoneMemberRecord *record, int vsan, std::uint16_t cim_type,
                             std::string_view id_text, bool active, std::string_view value_text) {
    // A text that doesn't fit is cut to the field, as copyText cuts it.
    FieldWriter(record->instance_id)
        .number(vsan)
        .separator("^")
        .number(cim_type)
        .separator("^")
        .text(id_text)
        .separator(active ? "^1" : "^0")
        .finish();
    record->cim_member_type = cim_type;
    copyText(record->member_value, value_text);
}

inline void fillRecord(ZoneMemberRecord *record, const Member &member) {
    fillMemberRecord(record, member.vsan, member.cim_type, member.id_text, member.active,
                     member.value_text);
}

// One record; null when out of memory.
template <typename Record, typename Source>
Record *newRecord(const Source &source) {
    auto *record = static_cast<Record *>(std::calloc(1, sizeof(Record)));
    if (record != nullptr) fillRecord(record, source);
    return record;
}

// An array of records grown one record at a time (zeroed, as calloc makes
// them) and handed over whole; what is not handed over is freed.
template <typename Record>
class RecordArray {
  public:
    RecordArray() = default;
    ~RecordArray() { std::free(records_); }
    RecordArray(const RecordArray &) = delete;
    RecordArray &operator=(const RecordArray &) = delete;

    // Room for n zeroed records in one block, when the count is known
    // before the rows come (the array must still be empty); false when out
    // of memory.
    bool reserve(std::size_t n) {
        if (records_ != nullptr || n == 0) return true;
        records_ = static_cast<Record *>(std::calloc(n, sizeof(Record)));
        if (records_ == nullptr) return false;
        capacity_ = n;
        return true;
    }
    // The array becomes a copy of records already rendered, stride
    // sizeof(Record) (the array must still be empty); false when out of
    // memory.
    bool copyOf(std::string_view rendered) {
        if (records_ != nullptr) return false;
        const std::size_t n = rendered.size() / sizeof(Record);
        if (n == 0) return true;
        records_ = static_cast<Record *>(std::malloc(n * sizeof(Record)));
        if (records_ == nullptr) return false;
        std::memcpy(static_cast<void *>(records_), rendered.data(), n * sizeof(Record));
        size_ = capacity_ = n;
        return true;
    }
    // A new zeroed record at the end; null when out of memory.
    Record *add() {
        if (size_ == capacity_ && !grow()) return nullptr;
        return &records_[size_++];
    }
    // An empty array is still an allocated array of one zeroed record.
    int handOver(int *count, Record **records) {
        if (records_ == nullptr && !grow()) return kErrUnknown;
        *count = static_cast<int>(size_);
        *records = records_;
        records_ = nullptr;
        size_ = capacity_ = 0;
        return 0;
    }

  private:
    bool grow() {
        std::size_t capacity = capacity_ == 0 ? 2 : capacity_ * 2;
        auto *grown = static_cast<Record *>(std::realloc(records_, capacity * sizeof(Record)));
        if (grown == nullptr) return false;
        std::memset(static_cast<void *>(grown + capacity_), 0,
                    (capacity - capacity_) * sizeof(Record));
        records_ = grown;
        capacity_ = capacity;
        return true;
    }

    Record *records_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

// A linked list of records built at its tail and handed over whole; what is
// not handed over is freed node by node.
template <typename Record>
class RecordList {
  public:
    RecordList() = default;
    ~RecordList() {
        while (head_ != nullptr) {
            Record *next = head_->next;
            std::free(head_);
            head_ = next;
        }
    }
    RecordList(const RecordList &) = delete;
    RecordList &operator=(const RecordList &) = delete;

    // A new zeroed node at the tail; null when out of memory. (From malloc,
    // then cleared: the caller frees the nodes of one list just before
    // asking for the next, and calloc would never reuse them from the
    // allocator's cache.) Nodes are asked for in sizes that take turns
    // (nodeSize): the C library's per-thread cache keeps only seven freed
    // blocks of one size, and a list of eighty nodes of one size went
    // through the allocator's slow paths for all the others, once freed and
    // once again made.
    Record *add() {
        auto *node = static_cast<Record *>(std::malloc(nodeSize(size_)));
        if (node == nullptr) return nullptr;
        clearBytes(node, sizeof(Record));
        *tail_ = node;
        tail_ = &node->next;
        ++size_;
        return node;
    }
    std::size_t size() const { return size_; }
    // Null when empty.
    Record *handOver() {
        Record *head = head_;
        head_ = nullptr;
        tail_ = &head_;
        size_ = 0;
        return head;
    }

  private:
    // The sizes from the record's up to the largest block the cache keeps,
    // a size class of the allocator (16 bytes) apart. A node is never used
    // past its record's bytes.
    static constexpr std::size_t kLargestCached = 1032;
    static constexpr std::size_t kSizeClass = 16;
    static constexpr std::size_t kSizes =
        sizeof(Record) < kLargestCached ? (kLargestCached - sizeof(Record)) / kSizeClass + 1 : 1;
    static std::size_t nodeSize(std::size_t index) {
        return sizeof(Record) + kSizeClass * (index % kSizes);
    }
    Record *head_ = nullptr;
    Record **tail_ = &head_;
    std::size_t size_ = 0;
};

// A linked list of records in the order given; null when empty.
template <typename Record, typename Source>
int toList(const std::vector<Source> &sources, Record **list) {
    Record *head = nullptr;
    Record **tail = &head;
    for (const Source &source : sources) {
        Record *node = newRecord<Record>(source);
        if (node == nullptr) {
            while (head != nullptr) {
                Record *next = head->next;
                std::free(head);
                head = next;
            }
            return kErrUnknown;
        }
        *tail = node;
        tail = &node->next;
    }
    *list = head;
    return 0;
}

}  // namespace zonesim
