// Platform records made from the store's objects. Everything is allocated
// with calloc (unused bytes zero) and handed to the caller, who frees it:
// arrays with one free(), lists node by node.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/zoning_platform.h"
#include "sim/sim_errors.h"
#include "sim/store.h"

namespace zonesim {

template <std::size_t N>
void copyText(char (&field)[N], const std::string &text) {
    std::size_t n = text.size() < N - 1 ? text.size() : N - 1;
    std::memcpy(field, text.data(), n);
    field[n] = '\0';
}

// The InstanceIDs are written straight into the record, in the form of
// ZoningObject::instanceId() and Member::instanceId(): enumerations fill
// tens of thousands of records, and building each text as a string first
// cost as much as the query that found the object.
template <typename Record>
void fillRecord(Record *record, const ZoningObject &object) {
    std::snprintf(record->instance_id, sizeof record->instance_id, "%d^%d^%d", object.vsan,
                  object.number, object.active ? 1 : 0);
    copyText(record->name, object.name);
}

inline void fillRecord(ZoneMemberRecord *record, const Member &member) {
    // A text that doesn't fit is cut to the field, as copyText cuts it.
    std::snprintf(record->instance_id, sizeof record->instance_id, "%d^%u^%s^%d", member.vsan,
                  static_cast<unsigned>(member.cim_type), member.id_text.c_str(),
                  member.active ? 1 : 0);
    record->cim_member_type = member.cim_type;
    copyText(record->member_value, member.value_text);
}

// One record; null when out of memory.
template <typename Record, typename Source>
Record *newRecord(const Source &source) {
    auto *record = static_cast<Record *>(std::calloc(1, sizeof(Record)));
    if (record != nullptr) fillRecord(record, source);
    return record;
}

// An array of records in the order given, stride sizeof(Record). An empty
// answer is still an allocated array (of one zeroed record) with count 0.
template <typename Record>
int toArray(const std::vector<ZoningObject> &objects, int *count, Record **records) {
    std::size_t n = objects.empty() ? 1 : objects.size();
    auto *array = static_cast<Record *>(std::calloc(n, sizeof(Record)));
    if (array == nullptr) return kErrUnknown;
    for (std::size_t i = 0; i < objects.size(); ++i) fillRecord(&array[i], objects[i]);
    *count = static_cast<int>(objects.size());
    *records = array;
    return 0;
}

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
