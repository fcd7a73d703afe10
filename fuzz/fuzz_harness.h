// What the fuzz targets share: the provider's three interfaces over a
// private simulated switch loaded with the example fabric, and a builder
// that turns the fuzzer's bytes into the CMPI objects a CIM server hands a
// provider (object paths, arguments, filters, property lists).
//
// Everything an input builds lives in the cmpihost::Request the target makes
// for that input, so nothing outlives it and leaks show up as leaks of the
// provider or of the switch.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include <cmpidt.h>
#include <cmpift.h>

#include "host/cmpihost.h"

namespace zonefuzz {

struct Interfaces {
    CMPIInstanceMI *instance = nullptr;
    CMPIAssociationMI *association = nullptr;
    CMPIMethodMI *method = nullptr;
};

// The first call sends standard output to /dev/null (the provider traces
// every call there), points ZONE_SIM_DB at a private database holding the
// example fabric, calls the provider's three factories and collects the
// paths of every object of the fabric. Later calls answer the same MIs.
const Interfaces &interfaces();

// Puts the switch back to the example fabric when anything wrote to it
// since the last load, so that every input starts from the same state and a
// crash reproduces from its input alone.
void restore_fabric_if_changed();

// Builds CMPI objects from the fuzzer's bytes, inside the current request.
class InputBuilder {
  public:
    explicit InputBuilder(FuzzedDataProvider &data);

    bool more() const { return data_.remaining_bytes() > 0; }
    template <typename T>
    T number(T low, T high) {
        return data_.ConsumeIntegralInRange<T>(low, high);
    }
    bool flag() { return data_.ConsumeBool(); }

    // A path of the fabric, one made by an earlier operation of this input,
    // either of them altered (class, namespace, keys), or one made up.
    CMPIObjectPath *object_path();
    // A path of a class only (for enumerations): mostly a served class.
    CMPIObjectPath *class_path();
    // The target of a method: mostly a zone service of some VSAN.
    CMPIObjectPath *method_target();
    const char *method_name();
    // Input arguments: shaped like the method's when `shaped`, else any.
    CMPIArgs *arguments(const char *method);
    // assocClass / resultClass / role / resultRole filters: null, a known
    // name in any letter case, or any text.
    const char *class_filter();
    const char *role_filter();
    // Null (all properties) or a null-terminated list of names.
    const char **property_list();
    CMPIInstance *instance_for(const CMPIObjectPath *path);
    const char *text();

    // Paths handed back by an operation (output arguments, deliveries) that
    // later operations of the same input may use as targets.
    void remember(const CMPIObjectPath *path);
    void remember_outputs(const CMPIArgs *out);
    void remember_deliveries(const cmpihost::Request &request);

  private:
    CMPIObjectPath *known_path();
    CMPIObjectPath *altered_path();
    CMPIObjectPath *made_up_path(int depth);
    CMPIObjectPath *copy_without_key(const CMPIObjectPath *source, unsigned skipped);
    void add_key(CMPIObjectPath *path, const char *name, int depth);
    void add_argument(CMPIArgs *args, const char *name, int depth);
    void add_shaped_argument(CMPIArgs *args, char kind, unsigned position);
    // A value of any CMPI type; *type receives the type to store it under
    // and null_value tells the caller to store it as a null value.
    CMPIValue value(CMPIType *type, bool *null_value, int depth);
    const char *class_name();
    const char *key_name();
    const char *keep(std::string text);
    std::string zoning_id_text();
    std::string member_id_text();
    std::string wwn_text();
    std::string number_text();
    std::string altered_known_text();

    FuzzedDataProvider &data_;
    std::deque<std::string> texts_;
    std::deque<std::vector<const char *>> lists_;
    std::vector<std::string> remembered_;
};

// One input: the switch back to the example fabric, then up to
// max_operations steps, each handed the input's builder and the provider's
// interfaces, while the input has bytes left.
template <typename Step>
int run_input(const std::uint8_t *bytes, std::size_t size, int max_operations, Step step) {
    const Interfaces &mi = interfaces();
    restore_fabric_if_changed();
    FuzzedDataProvider data(bytes, size);
    InputBuilder in(data);
    for (int i = 0; i < max_operations && in.more(); ++i) step(in, mi);
    return 0;
}

}  // namespace zonefuzz
