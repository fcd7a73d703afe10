// The method interface: method names, targets and argument lists made from
// the fuzzer's bytes, in sequences whose later calls may use the objects the
// earlier ones created, with reads and deletions of those objects between
// them so that what a method changed is also traversed.
#include <cstddef>
#include <cstdint>

#include "fuzz_harness.h"

namespace {

constexpr int kMaxOperations = 8;

void invoke(zonefuzz::InputBuilder &in, CMPIMethodMI *mi) {
    cmpihost::Request request;
    CMPIObjectPath *target = in.method_target();
    const char *method = in.method_name();
    const CMPIArgs *args = in.arguments(method);
    CMPIArgs *out = request.newArgs();
    mi->ft->invokeMethod(mi, request.context(), request.result(), target, method, args, out);
    in.remember_outputs(out);
}

void read_or_delete(zonefuzz::InputBuilder &in, const zonefuzz::Interfaces &mi) {
    cmpihost::Request request;
    const CMPIContext *ctx = request.context();
    const CMPIResult *result = request.result();
    switch (in.number<int>(0, 4)) {
        case 0: {
            CMPIObjectPath *op = in.object_path();
            mi.instance->ft->getInstance(mi.instance, ctx, result, op, in.property_list());
            break;
        }
        case 1: {
            CMPIObjectPath *op = in.class_path();
            mi.instance->ft->enumInstances(mi.instance, ctx, result, op, in.property_list());
            break;
        }
        case 2: {
            CMPIObjectPath *op = in.object_path();
            const char *assoc_class = in.class_filter();
            mi.association->ft->associatorNames(mi.association, ctx, result, op, assoc_class,
                                                nullptr, in.role_filter(), nullptr);
            break;
        }
        case 3: {
            CMPIObjectPath *op = in.object_path();
            const char *result_class = in.class_filter();
            mi.association->ft->references(mi.association, ctx, result, op, result_class,
                                           in.role_filter(), nullptr);
            break;
        }
        default:
            mi.instance->ft->deleteInstance(mi.instance, ctx, result, in.object_path());
            break;
    }
    in.remember_deliveries(request);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    return zonefuzz::run_input(bytes, size, kMaxOperations,
                               [](zonefuzz::InputBuilder &in, const zonefuzz::Interfaces &mi) {
                                   if (in.number<int>(0, 3) != 0)
                                       invoke(in, mi.method);
                                   else
                                       read_or_delete(in, mi);
                               });
}
