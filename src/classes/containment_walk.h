// The walk behind the two containment associations: VORNA_ElementSettingData
// (a zone or zone alias and each of its members) and
// VORNA_ZoneMemberOfCollection (a zone set and each of its zones, a zone and
// each of its aliases).
//
// Both go VSAN by VSAN; within a VSAN they visit two kinds of parent, each
// kind in the active database first and the editable one second, and ask
// the platform for the children of every parent. One (parent, child) pair is
// one association object, delivered as soon as it is built. A family only
// states its queries, builders and trace lines in a table (ContainmentFamily);
// the walk is the same for both.
//
// Ownership: each array of parents is freed once its pass is over, each
// child node right after its pair was delivered. Paths and instances from
// the builders belong to the request.
#pragma once

#include <cstdio>
#include <string_view>

#include <cmpidt.h>
#include <cmpift.h>

#include "classes/path_keys.h"
#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/trace_line.h"
#include "provider/zone_provider.h"

namespace zone::containment {

template <typename Record>
using ReferenceBuilder = CMPIObjectPath *(*)(const char *cls, const char *ns, const Record *record,
                                             const CMPIBroker *broker);

template <typename Parent, typename Child>
using PairPathBuilder = CMPIObjectPath *(*)(const char *cls, const char *ns, const Parent *parent,
                                            const Child *child, const CMPIBroker *broker);

using PairInstanceBuilder = CMPIInstance *(*)(const char *cls, const char *ns,
                                              const CMPIObjectPath *parent,
                                              const CMPIObjectPath *child, const char **props,
                                              const CMPIBroker *broker);

// One kind of parent and its children: the queries, the builders and the
// trace lines of its two passes, written into the walk's batch. A null trace
// prints nothing.
template <typename Parent, typename Child>
struct ParentKind {
    using Record = Parent;
    using AllQuery = int (*)(int queue, int vsan, int *count, Parent **records);
    using ChildQuery = int (*)(int queue, const char *parent_id, Child **list);

    AllQuery databases[2];  // active first, then the editable one
    ChildQuery children;
    const char *parent_class;
    ReferenceBuilder<Parent> parent_reference;
    const char *child_class;
    ReferenceBuilder<Child> child_reference;
    PairPathBuilder<Parent, Child> pair_path;
    void (*on_parents)(TraceBatch &out, int count, int vsan);
    void (*on_parent)(TraceBatch &out, const Parent &parent);
    void (*on_child)(TraceBatch &out, const Child &child);
};

template <typename First, typename Last>
struct ContainmentFamily {
    const char *association_class;
    std::string_view parent_key;  // key of the parent reference in the association's path
    std::string_view child_key;   // key of the child reference
    PairInstanceBuilder build_instance;
    First first;  // passes over the first kind of parent in every VSAN
    Last last;    // then over the second kind
};
// Spelled out for compilers without class template argument deduction for
// aggregates (clang before 17).
template <typename First, typename Last>
ContainmentFamily(const char *, std::string_view, std::string_view, PairInstanceBuilder, First,
                  Last) -> ContainmentFamily<First, Last>;

enum class Deliver { Instances, Names };

// What one enumeration delivers and where, and the batch its trace lines
// go to (set by the walk).
struct Request {
    Deliver what;
    const CMPIResult *result;
    const char **props;
    const char *ns;
    TraceBatch *out = nullptr;
};

template <typename Family, typename Kind, typename Child>
void deliver_pair(const Family &family, const Kind &kind, const typename Kind::Record &parent,
                  const CMPIObjectPath *parent_ref, const Child &child, const Request &request) {
    if (request.what == Deliver::Instances) {
        const CMPIObjectPath *child_ref =
            kind.child_reference(kind.child_class, request.ns, &child, _broker);
        paths::deliver_instance(
            request.result, family.build_instance(family.association_class, request.ns, parent_ref,
                                                  child_ref, request.props, _broker));
    } else {
        paths::deliver_path(request.result, kind.pair_path(family.association_class, request.ns,
                                                           &parent, &child, _broker));
    }
}

// One parent: its reference once (instances only), its trace, then a pair
// per child in the platform's list order. A failed child query only skips
// this parent.
template <typename Family, typename Parent, typename Child>
void visit_parent(const Family &family, const ParentKind<Parent, Child> &kind, const Parent &parent,
                  const Request &request) {
    const CMPIObjectPath *parent_ref =
        request.what == Deliver::Instances
            ? kind.parent_reference(kind.parent_class, request.ns, &parent, _broker)
            : nullptr;
    if (kind.on_parent != nullptr) kind.on_parent(*request.out, parent);

    OwnedList<Child> children;
    if (kind.children(mts_q, parent.instance_id, children.out()) != 0) return;
    children.visit([&](const Child *child) {
        if (kind.on_child != nullptr) kind.on_child(*request.out, *child);
        deliver_pair(family, kind, parent, parent_ref, *child, request);
    });
}

// One pass: every parent of one database of one VSAN. A failed query ends
// the pass; the array is freed once whatever its count.
template <typename Family, typename Parent, typename Child>
void run_pass(const Family &family, const ParentKind<Parent, Child> &kind,
              typename ParentKind<Parent, Child>::AllQuery query, int vsan,
              const Request &request) {
    int count = 0;
    Owned<Parent> parents;
    if (query(mts_q, vsan, &count, parents.out()) != 0) return;
    if (kind.on_parents != nullptr) kind.on_parents(*request.out, count, vsan);
    if (!parents) return;
    for (int i = 0; i < count; ++i) visit_parent(family, kind, parents.get()[i], request);
}

template <typename Family, typename Kind>
void run_both_databases(const Family &family, const Kind &kind, int vsan, const Request &request) {
    for (auto query : kind.databases) run_pass(family, kind, query, vsan, request);
}

// The enumeration: VSAN by VSAN, the first kind of parent and then the last,
// each active database before the editable one. Nothing is merged: an
// object present in both databases gives its pairs once per copy.
template <typename Family>
int enumerate(const Family &family, Request request) {
    TraceBatch out;
    request.out = &out;
    for_each_vsan(mts_q, [&](int vsan) {
        run_both_databases(family, family.first, vsan, request);
        run_both_databases(family, family.last, vsan, request);
    });
    return 0;
}

// getInstance: the instance is built from the two references of the
// request's path alone, whether or not the platform holds that pair; no
// zoning query is made.
template <typename Family>
int get_instance(const Family &family, const CMPIObjectPath *op, const CMPIResult *result,
                 const char **props) {
    const paths::ReferencePair pair =
        paths::reference_pair_of(op, family.parent_key, family.child_key);
    paths::deliver_instance(
        result, family.build_instance(family.association_class, paths::namespace_of(op), pair.first,
                                      pair.second, props, _broker));
    return 0;
}

// Trace texts of records are printed with their field width as a bound: a
// record is never read past its field, terminated or not.
template <std::size_t N>
constexpr int field_width(const char (&)[N]) {
    return static_cast<int>(N);
}

}  // namespace zone::containment
