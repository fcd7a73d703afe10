// Shared set-up of the zoning method tests: a platform double, a request of
// the in-process host whose result and args the handlers write into, and
// small makers for zone service targets, zoning object references, records
// and the values the handlers hand back.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include "host/cmpihost.h"
#include "platform_mock.h"
#include "provider/zone_provider.h"

namespace method_test {

inline constexpr int kQueue = 77;
inline constexpr const char *kRequestNamespace = "root/interop";

using Handler = int (*)(CMPIMethodMI *, const CMPIContext *, const CMPIResult *,
                        const CMPIObjectPath *, const char *, const CMPIArgs *, CMPIArgs *);

// A value the handler or the dispatcher handed to the result, reduced to
// what the tests compare: its CMPI type and its text or number.
struct Returned {
    CMPIType type;
    std::string text;  // for strings
    long long number;  // for integers
    bool operator==(const Returned &) const = default;
};

inline Returned uint32Zero() {
    return {CMPI_uint32, "", 0};
}
inline Returned sint32Zero() {
    return {CMPI_sint32, "", 0};
}
// Return texts travel as CMPI_chars: the value pointer is the text.
inline Returned textValue(const std::string &t) {
    return {CMPI_chars, t, 0};
}

inline void PrintTo(const Returned &r, std::ostream *os) {
    *os << "{type " << r.type << ", \"" << r.text << "\", " << r.number << "}";
}

template <typename T>
T *newRecord(const std::string &instance_id, const std::string &name = "") {
    T *record = static_cast<T *>(std::calloc(1, sizeof(T)));
    std::snprintf(record->instance_id, sizeof record->instance_id, "%s", instance_id.c_str());
    if constexpr (requires { record->name; })
        std::snprintf(record->name, sizeof record->name, "%s", name.c_str());
    return record;
}

template <template <typename> class MockKind = ::testing::StrictMock>
class MethodTest : public ::testing::Test {
  protected:
    MethodTest() {
        _broker = cmpihost::broker();
        mts_q = kQueue;
    }

    CMPIObjectPath *zoneService(const std::string &name,
                                const std::string &cls = "VORNA_ZoneService") {
        CMPIObjectPath *op = request.newObjectPath(kRequestNamespace, cls);
        cmpihost::addStringKey(op, "Name", name);
        return op;
    }
    CMPIObjectPath *keylessZoneService() {
        return request.newObjectPath(kRequestNamespace, "VORNA_ZoneService");
    }
    CMPIObjectPath *zoningRef(const std::string &cls, const std::string &id) {
        CMPIObjectPath *op = request.newObjectPath(kRequestNamespace, cls);
        cmpihost::addStringKey(op, "InstanceID", id);
        return op;
    }
    CMPIObjectPath *pathIn(const std::string &ns, const std::string &cls) {
        return request.newObjectPath(ns, cls);
    }
    CMPIArgs *args() { return request.newArgs(); }

    int call(Handler handler, const CMPIObjectPath *target, const CMPIArgs *in,
             CMPIArgs *out = nullptr) {
        return handler(nullptr, request.context(), request.result(), target, "method", in,
                       out != nullptr ? out : output);
    }

    std::vector<Returned> returned() const {
        std::vector<Returned> values;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            if (d.kind != cmpihost::Delivery::Kind::Data) continue;
            Returned r{d.data.type, "", 0};
            if (d.data.type == CMPI_string) r.text = cmpihost::text(d.data.value.string);
            if (d.data.type == CMPI_chars && d.data.value.chars != nullptr)
                r.text = d.data.value.chars;
            if (d.data.type == CMPI_uint32) r.number = d.data.value.uint32;
            if (d.data.type == CMPI_sint32) r.number = d.data.value.sint32;
            values.push_back(r);
        }
        return values;
    }

    unsigned outputCount() const { return output->ft->getArgCount(output, nullptr); }

    // The one output argument: its name and the reference it holds.
    struct OutputRef {
        std::string name;
        CMPIType type;
        std::string ns;
        std::string cls;
    };
    OutputRef outputRef(unsigned index = 0) const {
        CMPIString *name = nullptr;
        const CMPIData data = output->ft->getArgAt(output, index, &name, nullptr);
        OutputRef ref{cmpihost::text(name), data.type, "", ""};
        if (data.type == CMPI_ref && data.value.ref != nullptr) {
            ref.ns = cmpihost::text(CMGetNameSpace(data.value.ref, nullptr));
            ref.cls = cmpihost::text(CMGetClassName(data.value.ref, nullptr));
        }
        return ref;
    }

    MockKind<PlatformMock> platform;
    cmpihost::Request request;
    CMPIArgs *output = request.newArgs();
};

// The zone service VSAN texts every handler refuses with the key refusal.
inline const std::vector<std::string> &refusedVsanTexts() {
    static const std::vector<std::string> texts = {"0", "4097", "abc", "", "-3", "99999999999"};
    return texts;
}

}  // namespace method_test
