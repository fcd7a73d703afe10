// Every operation of the association interface from object paths and
// filters (association class, result class, roles, property lists) made
// from the fuzzer's bytes.
#include <cstddef>
#include <cstdint>

#include "fuzz_harness.h"

namespace {

constexpr int kMaxOperations = 6;

void run_one(zonefuzz::InputBuilder &in, CMPIAssociationMI *mi) {
    cmpihost::Request request;
    const CMPIContext *ctx = request.context();
    const CMPIResult *result = request.result();
    CMPIObjectPath *op = in.object_path();
    switch (in.number<int>(0, 4)) {
        case 0: {
            const char *assoc_class = in.class_filter();
            const char *result_class = in.class_filter();
            const char *role = in.role_filter();
            const char *result_role = in.role_filter();
            mi->ft->associators(mi, ctx, result, op, assoc_class, result_class, role, result_role,
                                in.property_list());
            break;
        }
        case 1: {
            const char *assoc_class = in.class_filter();
            const char *result_class = in.class_filter();
            const char *role = in.role_filter();
            const char *result_role = in.role_filter();
            mi->ft->associatorNames(mi, ctx, result, op, assoc_class, result_class, role,
                                    result_role);
            break;
        }
        case 2: {
            const char *result_class = in.class_filter();
            const char *role = in.role_filter();
            mi->ft->references(mi, ctx, result, op, result_class, role, in.property_list());
            break;
        }
        case 3: {
            const char *result_class = in.class_filter();
            const char *role = in.role_filter();
            mi->ft->referenceNames(mi, ctx, result, op, result_class, role);
            break;
        }
        default:
            mi->ft->cleanup(mi, ctx, in.flag() ? 1 : 0);
            break;
    }
    in.remember_deliveries(request);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    return zonefuzz::run_input(bytes, size, kMaxOperations,
                               [](zonefuzz::InputBuilder &in, const zonefuzz::Interfaces &mi) {
                                   run_one(in, mi.association);
                               });
}
