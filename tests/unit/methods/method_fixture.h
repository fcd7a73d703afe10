// Shared set-up of the method tests: a platform double, a request of the
// in-process host whose result and args the handlers write into, makers for
// targets, references, argument lists and records, and readers of what the
// handlers handed back.
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

using ::testing::_;
using ::testing::DoAll;
using ::testing::HasSubstr;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::StrEq;

inline constexpr int kQueue = 77;
inline constexpr const char *kRequestNamespace = "root/interop";

using Handler = int (*)(CMPIMethodMI *, const CMPIContext *, const CMPIResult *,
                        const CMPIObjectPath *, const char *, const CMPIArgs *, CMPIArgs *);

// One input argument for argsOf; handlers read arguments by position only.
struct Arg {
    CMPIType type;
    std::string text;
    CMPIValue value{};
    bool null = false;
};

// A zero-filled record of the zone server's, freed by whoever it is given to.
template <typename T>
T *newRecord(const std::string &instance_id) {
    T *record = static_cast<T *>(std::calloc(1, sizeof(T)));
    std::snprintf(record->instance_id, sizeof record->instance_id, "%s", instance_id.c_str());
    return record;
}

class MethodTest : public ::testing::Test {
  protected:
    MethodTest() {
        _broker = cmpihost::broker();
        mts_q = kQueue;
    }

    static Arg str(std::string t) { return {CMPI_chars, std::move(t)}; }
    static Arg u16(CMPIUint16 n) { return {CMPI_uint16, "", {.uint16 = n}}; }
    static Arg flag(bool b) { return {CMPI_boolean, "", {.boolean = b}}; }
    static Arg ref(const CMPIObjectPath *p) {
        return {CMPI_ref, "", {.ref = const_cast<CMPIObjectPath *>(p)}};
    }
    // A null value of the type, as a client sends an argument without value.
    static Arg nullOf(CMPIType type) { return {type, "", {}, true}; }

    CMPIObjectPath *pathIn(const std::string &ns, const std::string &cls) {
        return request.newObjectPath(ns, cls);
    }
    CMPIObjectPath *zoneService(const std::string &name,
                                const std::string &cls = "VORNA_ZoneService") {
        CMPIObjectPath *op = pathIn(kRequestNamespace, cls);
        cmpihost::addStringKey(op, "Name", name);
        return op;
    }
    CMPIObjectPath *zoningRef(const std::string &cls, const std::string &id) {
        CMPIObjectPath *op = pathIn(kRequestNamespace, cls);
        cmpihost::addStringKey(op, "InstanceID", id);
        return op;
    }
    CMPIArgs *args() { return request.newArgs(); }
    CMPIArgs *argsOf(const std::vector<Arg> &list) {
        CMPIArgs *in = args();
        for (std::size_t i = 0; i < list.size(); ++i) {
            const Arg &a = list[i];
            const CMPIValue *value = a.null ? nullptr
                                     : a.type == CMPI_chars
                                         ? reinterpret_cast<const CMPIValue *>(a.text.c_str())
                                         : &a.value;
            in->ft->addArg(in, ("A" + std::to_string(i)).c_str(), value, a.type);
        }
        return in;
    }

    // Runs a handler; what it prints is kept in `trace`.
    int call(Handler handler, const CMPIObjectPath *target, const CMPIArgs *in) {
        testing::internal::CaptureStdout();
        const int outcome =
            handler(nullptr, request.context(), request.result(), target, "method", in, output);
        trace = testing::internal::GetCapturedStdout();
        return outcome;
    }

    // The zone server splits the InstanceID into these fields.
    void splits(const char *id, int vsan, int number, int active, int answer = 0) {
        EXPECT_CALL(platform, zs_cim_get_fields_from_generic_instance_id(StrEq(id), _, _, _))
            .WillOnce(DoAll(SetArgPointee<1>(vsan), SetArgPointee<2>(number),
                            SetArgPointee<3>(active), Return(answer)));
    }
    void cannotSplit(const char *id) { splits(id, 0, 0, 0, -1); }

    // The values handed to the result: texts (CMPI_chars, the value pointer
    // is the text) as they are, numbers as "uint32 0" or "sint32 0".
    std::vector<std::string> returned() const {
        std::vector<std::string> values;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            if (d.kind != cmpihost::Delivery::Kind::Data) continue;
            const CMPIData &v = d.data;
            if (v.type == CMPI_chars)
                values.push_back(v.value.chars ? v.value.chars : "(null)");
            else if (v.type == CMPI_uint32)
                values.push_back("uint32 " + std::to_string(v.value.uint32));
            else if (v.type == CMPI_sint32)
                values.push_back("sint32 " + std::to_string(v.value.sint32));
            else
                values.push_back("type " + std::to_string(v.type));
        }
        return values;
    }

    unsigned outputCount() const { return output->ft->getArgCount(output, nullptr); }
    // The output argument at index as "name -> namespace:class".
    std::string outputRef(unsigned index = 0) const {
        CMPIString *name = nullptr;
        const CMPIData data = output->ft->getArgAt(output, index, &name, nullptr);
        if (data.type != CMPI_ref || data.value.ref == nullptr) return "no reference";
        return cmpihost::text(name) + " -> " +
               cmpihost::text(CMGetNameSpace(data.value.ref, nullptr)) + ":" +
               cmpihost::text(CMGetClassName(data.value.ref, nullptr));
    }

    ::testing::StrictMock<PlatformMock> platform;
    cmpihost::Request request;
    CMPIArgs *output = request.newArgs();
    std::string trace;
};

}  // namespace method_test
