// Every operation of the instance interface on object paths, property lists
// and instances made from the fuzzer's bytes: enumerations, retrieval,
// deletion, and the operations the provider doesn't support.
#include <cstddef>
#include <cstdint>

#include "fuzz_harness.h"

namespace {

constexpr int kMaxOperations = 6;

void run_one(zonefuzz::InputBuilder &in, CMPIInstanceMI *mi) {
    cmpihost::Request request;
    const CMPIContext *ctx = request.context();
    const CMPIResult *result = request.result();
    switch (in.number<int>(0, 8)) {
        case 0:
            mi->ft->enumInstanceNames(mi, ctx, result, in.class_path());
            break;
        case 1: {
            CMPIObjectPath *op = in.class_path();
            mi->ft->enumInstances(mi, ctx, result, op, in.property_list());
            break;
        }
        case 2:
        case 3: {
            CMPIObjectPath *op = in.object_path();
            mi->ft->getInstance(mi, ctx, result, op, in.property_list());
            break;
        }
        case 4:
        case 5:
            mi->ft->deleteInstance(mi, ctx, result, in.object_path());
            break;
        case 6: {
            CMPIObjectPath *op = in.flag() ? in.object_path() : nullptr;
            mi->ft->createInstance(mi, ctx, result, op, op ? in.instance_for(op) : nullptr);
            break;
        }
        case 7: {
            CMPIObjectPath *op = in.flag() ? in.object_path() : nullptr;
            CMPIInstance *inst = op ? in.instance_for(op) : nullptr;
            mi->ft->modifyInstance(mi, ctx, result, op, inst, in.property_list());
            break;
        }
        default:
            if (in.flag()) {
                CMPIObjectPath *op = in.class_path();
                const char *query = in.text();
                mi->ft->execQuery(mi, ctx, result, op, query, in.text());
            } else {
                mi->ft->cleanup(mi, ctx, in.flag() ? 1 : 0);
            }
            break;
    }
    in.remember_deliveries(request);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    return zonefuzz::run_input(bytes, size, kMaxOperations,
                               [](zonefuzz::InputBuilder &in, const zonefuzz::Interfaces &mi) {
                                   run_one(in, mi.instance);
                               });
}
