// The read side of the instance interface: enumInstanceNames, enumInstances
// and getInstance. Each takes the class name from the request's path, checks
// it, takes the zoning mutex and hands the request to the handler of the
// class; the handlers deliver into the result themselves. Nothing here calls
// returnDone: the result is complete when the operation returns.
#include <cstdio>
#include <string_view>

#include <cmpimacs.h>

#include "platform/zoning_platform.h"
#include "provider/platform_records.h"
#include "provider/zone_provider.h"

namespace {

// Text of a CMPI string, or an empty text when there is none.
const char *text_or_empty(const CMPIString *s) {
    if (s == nullptr) return "";
    const char *chars = CMGetCharPtr(s);
    return chars != nullptr ? chars : "";
}

const char *class_name_of(const CMPIObjectPath *op) {
    return text_or_empty(CMGetClassName(op, nullptr));
}

const char *namespace_of(const CMPIObjectPath *op) {
    return text_or_empty(CMGetNameSpace(op, nullptr));
}

// Everything a class handler may need from one request. The namespace is
// asked of the path by each row when it calls its handler.
struct ClassRequest {
    const char *cls;
    const CMPIResult *result;
    const CMPIObjectPath *op;
    const char **props;
    const char *key;  // getInstance only: the text of the identifying key
    CMPIStatus *st;   // getInstance only: the status the operation returns
};

using HandlerCall = void (*)(const ClassRequest &);

struct ClassRoutines {
    std::string_view name;
    HandlerCall names;      // enumInstanceNames
    HandlerCall instances;  // enumInstances
    HandlerCall get;        // getInstance
};

// The served classes and the handler each operation calls for them. The
// handlers' own results are not looked at: what counts is what reached the
// result and, for getInstance, the status record. VORNA_HostedCollection is
// served but has no instances.
static constexpr ClassRoutines kClassDispatch[] = {
    {"VORNA_ZoneSet",
     [](const ClassRequest &r) { get_zone_set_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_zone_set_all_instances(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) {
         get_zone_set_instance(r.cls, r.key, r.result, r.props, namespace_of(r.op), r.st);
     }},
    {"VORNA_Zone",
     [](const ClassRequest &r) { get_zone_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_zone_all_instances(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) {
         get_zone_instance(r.cls, r.key, r.result, r.props, namespace_of(r.op), r.st);
     }},
    {"VORNA_ZoneAlias",
     [](const ClassRequest &r) { get_zone_alias_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_zone_alias_all_instances(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) {
         get_zone_alias_instance(r.cls, r.key, r.result, r.props, namespace_of(r.op), r.st);
     }},
    {"VORNA_DeviceAlias",
     [](const ClassRequest &r) { get_device_alias_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_device_alias_instance(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) {
         get_device_alias_instance_gi(r.cls, r.key, r.result, r.props, namespace_of(r.op));
     }},
    {"VORNA_ZoneMemberSettingData",
     [](const ClassRequest &r) { get_zone_member_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_zone_member_all_instances(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) {
         get_zone_member_instance(r.cls, r.key, r.result, r.props, namespace_of(r.op), r.st);
     }},
    {"VORNA_ZoneService",
     [](const ClassRequest &r) {
         get_zone_service_helper(r.cls, 0, r.result, nullptr, namespace_of(r.op), mts_q, _broker);
     },
     [](const ClassRequest &r) {
         get_zone_service_helper(r.cls, 1, r.result, r.props, namespace_of(r.op), mts_q, _broker);
     },
     [](const ClassRequest &r) {
         get_zone_service_instance(r.cls, r.key, r.result, r.props, namespace_of(r.op), mts_q,
                                   _broker, r.st);
     }},
    // The hosted service handlers always get the literal class name.
    {"VORNA_HostedService",
     [](const ClassRequest &r) {
         get_hosted_service_keys("VORNA_HostedService", r.result, namespace_of(r.op), mts_q,
                                 _broker);
     },
     [](const ClassRequest &r) {
         get_hosted_service_all_instances("VORNA_HostedService", r.result, namespace_of(r.op),
                                          mts_q, r.props, _broker);
     },
     [](const ClassRequest &r) {
         get_hosted_service_instance(r.op, r.result, r.props, mts_q, _broker, r.st);
     }},
    {"VORNA_ZoneMemberOfCollection",
     [](const ClassRequest &r) { get_moc_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_moc_all_instances(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) { get_moc_instance(r.op, r.result, r.props); }},
    {"VORNA_ElementSettingData",
     [](const ClassRequest &r) { get_esd_keys(r.cls, r.result, namespace_of(r.op)); },
     [](const ClassRequest &r) {
         get_esd_all_instances(r.cls, r.result, r.props, namespace_of(r.op));
     },
     [](const ClassRequest &r) { get_esd_instance(r.op, r.result, r.props); }},
    {"VORNA_ZoneHostedCollection",
     [](const ClassRequest &r) {
         get_zone_hosted_collection_keys(r.cls, r.result, namespace_of(r.op), mts_q, _broker);
     },
     [](const ClassRequest &r) {
         get_zone_hosted_collection_all_instances(r.cls, r.result, namespace_of(r.op), mts_q,
                                                  r.props, _broker);
     },
     [](const ClassRequest &r) {
         get_zone_hosted_collection_instance(r.op, r.result, r.props, mts_q, _broker);
     }},
    {"VORNA_HostedCollection", nullptr, nullptr, nullptr},
};

const ClassRoutines *find_class_routines(const char *class_name) {
    for (const ClassRoutines &row : kClassDispatch)
        if (zone::same_name(class_name, row.name)) return &row;
    return nullptr;
}

// Holds the zoning mutex for the lifetime of the object.
class ZoningLock {
  public:
    ZoningLock() { mutex_lock(); }
    ~ZoningLock() { mutex_unlock(); }
    ZoningLock(const ZoningLock &) = delete;
    ZoningLock &operator=(const ZoningLock &) = delete;
};

// Calls the handler that the row has for the operation, if any. An unserved
// class has no row and so reaches no handler.
void dispatch(const char *class_name, HandlerCall ClassRoutines::*operation,
              const ClassRequest &request) {
    const ClassRoutines *row = find_class_routines(class_name);
    if (row != nullptr && row->*operation != nullptr) (row->*operation)(request);
}

CMPIStatus status(CMPIrc rc) {
    return CMPIStatus{rc, nullptr};
}

// The text of the identifying key: the first key whose name the class
// accepts, when its value is a string; an empty text otherwise.
void choose_key(const CMPIObjectPath *op, const char *class_name, unsigned int key_count,
                CMPIStatus *st, char (&key)[zone::kKeyTextSize]) {
    key[0] = '\0';
    for (unsigned int i = 0; i < key_count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData value = CMGetKeyAt(op, i, &name, st);
        const char *key_name = name != nullptr ? CMGetCharPtr(name) : nullptr;
        if (check_key_name_zm(class_name, key_name) == 0) continue;
        if (value.type == CMPI_string && value.value.string != nullptr) {
            zone::copy_key_text(key, text_or_empty(value.value.string));
            std::printf("\tfound key %s : %s\n", key_name != nullptr ? key_name : "", key);
        }
        return;
    }
}

}  // namespace

extern "C" {

CMPIStatus zone_Provider_EnumInstanceNames(CMPIInstanceMI *, const CMPIContext *,
                                           const CMPIResult *result, const CMPIObjectPath *op) {
    std::printf("In EnumInstanceNames ZoneProvider");
    const char *class_name = class_name_of(op);
    // An unserved class is not refused here: it simply finds no handler.
    check_class_name_zm(class_name);
    {
        ZoningLock lock;
        dispatch(class_name, &ClassRoutines::names,
                 ClassRequest{class_name, result, op, nullptr, nullptr, nullptr});
    }
    return status(CMPI_RC_OK);
}

CMPIStatus zone_Provider_EnumInstances(CMPIInstanceMI *, const CMPIContext *,
                                       const CMPIResult *result, const CMPIObjectPath *op,
                                       const char **props) {
    std::printf("In EnumInstances ZoneProvider");
    const char *class_name = class_name_of(op);
    if (check_class_name_zm(class_name) == 0) return status(CMPI_RC_ERR_NOT_SUPPORTED);
    {
        ZoningLock lock;
        dispatch(class_name, &ClassRoutines::instances,
                 ClassRequest{class_name, result, op, props, nullptr, nullptr});
    }
    // Whatever a handler met, what it found is in the result.
    return status(CMPI_RC_OK);
}

CMPIStatus zone_Provider_GetInstance(CMPIInstanceMI *, const CMPIContext *,
                                     const CMPIResult *result, const CMPIObjectPath *op,
                                     const char **props) {
    CMPIStatus st = status(CMPI_RC_OK);
    print_char_array_zp(props);
    const unsigned int key_count = CMGetKeyCount(op, &st);
    std::printf("In Get Instance ZoneProvider");
    const char *class_name = class_name_of(op);
    if (check_class_name_zm(class_name) == 0) return status(CMPI_RC_ERR_NOT_SUPPORTED);

    char key[zone::kKeyTextSize];
    choose_key(op, class_name, key_count, &st, key);
    {
        ZoningLock lock;
        dispatch(class_name, &ClassRoutines::get,
                 ClassRequest{class_name, result, op, props, key, &st});
        if (st.rc != CMPI_RC_OK)
            std::printf("--- %s CMPI GetInstance() failed : %s", class_name, text_or_empty(st.msg));
    }
    std::printf(" Returnng successs always \n");
    // The handler's status is the answer, as is any error met reading keys.
    return st;
}

}  // extern "C"
