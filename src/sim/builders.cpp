// CMPI instances and object paths of the simulated switch.
//
// Every object is made through the broker the caller passes in and belongs
// to that broker; nothing here is released. A builder answers null when the
// object can't be made: no broker, no record, a missing reference, or a
// broker call that fails. In the test mode of fault_injection.h every
// builder call is counted and may be made to answer null.
//
// Keys of the object paths (host: getCSName(), namespace and class as given):
//   zone set, zone, alias, member   InstanceID (the record's)
//   device alias                    InstanceID = its pWWN, "21:00:...:b2"
//   zone service                    SystemCreationClassName "VORNA_Vsan",
//                                   SystemName, CreationClassName, Name; both
//                                   names are the VSAN number in decimal
//   VSAN                            CreationClassName, Name = VSAN number
//                                   (its ElementName is the VSAN's name)
//   element setting data            ManagedElement, SettingData (references)
//   member of collection            Collection, Member (references)
//   hosted service / collection     Antecedent, Dependent (references)
// Instances carry their keys and, unless a property list leaves them out,
// the properties a zoning client reads (see each builder).
#include <strings.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>

#include <cmpidt.h>
#include <cmpift.h>

#include "platform/zoning_platform.h"
#include "sim/fault_injection.h"
#include "sim/member_identity.h"
#include "sim/member_types.h"
#include "sim/sim_records.h"

namespace {

constexpr const char *kVsanClass = "VORNA_Vsan";
constexpr const char *kZoneServiceClass = "VORNA_ZoneService";
constexpr const char *kZoneSetClass = "VORNA_ZoneSet";
constexpr const char *kZoneClass = "VORNA_Zone";
constexpr const char *kZoneAliasClass = "VORNA_ZoneAlias";
constexpr const char *kZoneMemberClass = "VORNA_ZoneMemberSettingData";

constexpr CMPIUint16 kZoneTypeDefault = 2;
// The simulated zone service has no sessions.
constexpr CMPIUint16 kSessionStateNotApplicable = 4;
constexpr CMPIUint16 kRequestedSessionStateNoChange = 5;
constexpr const char *kVsanNameFormat = "Other";

// ---- values -------------------------------------------------------------

// One key or property value in the form the broker takes it. A value of
// type CMPI_null stands for a property that has nothing to say and is left
// out.
class Value {
  public:
    static Value text(const char *name, const char *chars) {
        Value v(name, CMPI_chars);
        v.chars_ = chars;
        return v;
    }
    static Value reference(const char *name, const CMPIObjectPath *ref) {
        Value v(name, CMPI_ref);
        v.value_.ref = const_cast<CMPIObjectPath *>(ref);
        return v;
    }
    static Value uint16(const char *name, CMPIUint16 number) {
        Value v(name, CMPI_uint16);
        v.value_.uint16 = number;
        return v;
    }
    static Value boolean(const char *name, std::optional<bool> flag) {
        Value v(name, flag ? CMPI_boolean : CMPI_null);
        v.value_.boolean = flag.value_or(false) ? 1 : 0;
        return v;
    }

    const char *name() const { return name_; }
    CMPIType type() const { return type_; }
    bool absent() const { return type_ == CMPI_null; }
    // A reference or text that isn't there can't make a key.
    bool usable_as_key() const {
        if (type_ == CMPI_ref) return value_.ref != nullptr;
        if (type_ == CMPI_chars) return chars_ != nullptr;
        return !absent();
    }
    // CMPI_chars values are passed as the character pointer itself.
    const CMPIValue *data() const {
        if (type_ == CMPI_chars) return reinterpret_cast<const CMPIValue *>(chars_);
        return &value_;
    }

  private:
    Value(const char *name, CMPIType type) : name_(name), type_(type) {}

    const char *name_;
    CMPIType type_;
    const char *chars_ = nullptr;
    CMPIValue value_{};
};

using Values = std::span<const Value>;

// A text field of a platform record, cut at its NUL or at the field's end:
// the field itself when it holds its NUL (every path of an enumeration is
// made from one), else a terminated copy.
template <std::size_t N>
class FieldText {
  public:
    explicit FieldText(const char (&field)[N]) : text_(field) {
        if (strnlen(field, N) < N) return;
        std::memcpy(copy_, field, N);
        copy_[N] = '\0';
        text_ = copy_;
    }
    FieldText(const FieldText &) = delete;
    FieldText &operator=(const FieldText &) = delete;
    const char *c_str() const { return text_; }

  private:
    const char *text_;
    char copy_[N + 1];
};

// A number in decimal, as "%d" writes it.
class NumberText {
  public:
    explicit NumberText(int number) {
        auto written = std::to_chars(text_, text_ + sizeof text_ - 1, number);
        *written.ptr = '\0';
    }
    const char *c_str() const { return text_; }

  private:
    char text_[16];
};

// ---- broker calls ---------------------------------------------------------

bool broker_usable(const CMPIBroker *broker) {
    return broker != nullptr && broker->eft != nullptr;
}

bool is_wanted(const char **props, const char *name) {
    if (props == nullptr) return true;
    for (const char **p = props; *p != nullptr; ++p) {
        if (strcasecmp(*p, name) == 0) return true;
    }
    return false;
}

CMPIObjectPath *new_path(const CMPIBroker *broker, const char *ns, const char *cls) {
    if (!broker_usable(broker) || ns == nullptr || cls == nullptr) return nullptr;
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIObjectPath *path = broker->eft->newObjectPath(broker, ns, cls, &status);
    if (status.rc != CMPI_RC_OK || path == nullptr || path->hdl == nullptr) return nullptr;
    const char *host = getCSName();
    if (host != nullptr && path->ft->setHostname(path, host).rc != CMPI_RC_OK) return nullptr;
    return path;
}

CMPIObjectPath *keyed_path(const CMPIBroker *broker, const char *ns, const char *cls, Values keys) {
    for (const Value &key : keys) {
        if (!key.usable_as_key()) return nullptr;
    }
    CMPIObjectPath *path = new_path(broker, ns, cls);
    if (path == nullptr) return nullptr;
    for (const Value &key : keys) {
        if (path->ft->addKey(path, key.name(), key.data(), key.type()).rc != CMPI_RC_OK) {
            return nullptr;
        }
    }
    return path;
}

bool set_property(CMPIInstance *instance, const Value &value) {
    return instance->ft->setProperty(instance, value.name(), value.data(), value.type()).rc ==
           CMPI_RC_OK;
}

// Whether an instance made from a path of these keys already holds the key
// as a property: a broker may copy a path's keys into the new instance, and
// setting them again would only copy each value once more.
bool carries_key(const CMPIInstance *instance, const Value &key) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIData held = instance->ft->getProperty(instance, key.name(), &status);
    if (status.rc != CMPI_RC_OK || (held.state & CMPI_nullValue) != 0) return false;
    if (key.type() == CMPI_chars) return held.type == CMPI_string || held.type == CMPI_chars;
    return held.type == key.type();
}

// An instance on the path of its keys: the keys always, the other
// properties when present and asked for.
CMPIInstance *keyed_instance(const CMPIBroker *broker, const char *ns, const char *cls, Values keys,
                             Values properties, const char **props) {
    CMPIObjectPath *path = keyed_path(broker, ns, cls, keys);
    if (path == nullptr) return nullptr;
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIInstance *instance = broker->eft->newInstance(broker, path, &status);
    if (status.rc != CMPI_RC_OK || instance == nullptr || instance->hdl == nullptr) {
        return nullptr;
    }
    for (const Value &key : keys) {
        if (!carries_key(instance, key) && !set_property(instance, key)) return nullptr;
    }
    for (const Value &property : properties) {
        if (property.absent() || !is_wanted(props, property.name())) continue;
        if (!set_property(instance, property)) return nullptr;
    }
    return instance;
}

// ---- what the records say ----------------------------------------------------

std::optional<bool> active_of_object(const char *instance_id) {
    int vsan = 0;
    int number = 0;
    int active = 0;
    if (zs_cim_get_fields_from_generic_instance_id(instance_id, &vsan, &number, &active) != 0) {
        return std::nullopt;
    }
    return active != 0;
}

// What zs_cim_get_fields_from_member_instance_id would say of the id, without
// decoding the member.
std::optional<bool> active_of_member(const char *instance_id) {
    bool active = false;
    if (zonesim::activeOfMemberInstanceId(instance_id, &active) != 0) return std::nullopt;
    return active;
}

// The VSAN's name as the simulated VSAN table describes it; false when the
// description has none.
bool copy_vsan_name(const VsanEntry &vsan, char (&out)[SIM_NAME_LEN + 1]) {
    const char *name = reinterpret_cast<const char *>(&vsan) + offsetof(SimVsanEntry, name);
    std::size_t length = strnlen(name, SIM_NAME_LEN);
    std::memcpy(out, name, length);
    out[length] = '\0';
    return length > 0;
}

// ---- paths of the zoning objects ------------------------------------------------

// The one key of every zoning object's path, added straight: enumerations
// make tens of thousands of these.
CMPIObjectPath *instance_id_path(const CMPIBroker *broker, const char *ns, const char *cls,
                                 const char *instance_id) {
    if (instance_id == nullptr) return nullptr;
    CMPIObjectPath *path = new_path(broker, ns, cls);
    if (path == nullptr) return nullptr;
    const auto *value = reinterpret_cast<const CMPIValue *>(instance_id);
    return path->ft->addKey(path, "InstanceID", value, CMPI_chars).rc == CMPI_RC_OK ? path
                                                                                    : nullptr;
}

template <typename Record>
CMPIObjectPath *record_path(const char *cls, const char *ns, const Record *record,
                            const CMPIBroker *broker) {
    if (record == nullptr) return nullptr;
    FieldText id(record->instance_id);
    return instance_id_path(broker, ns, cls, id.c_str());
}

CMPIObjectPath *vsan_path(const char *cls, const char *ns, int vsan, const CMPIBroker *broker) {
    NumberText name(vsan);
    const Value keys[] = {Value::text("CreationClassName", cls), Value::text("Name", name.c_str())};
    return keyed_path(broker, ns, cls, keys);
}

CMPIObjectPath *zone_service_path(const char *cls, const char *ns, int vsan,
                                  const CMPIBroker *broker) {
    NumberText name(vsan);
    const Value keys[] = {Value::text("SystemCreationClassName", kVsanClass),
                          Value::text("SystemName", name.c_str()),
                          Value::text("CreationClassName", cls), Value::text("Name", name.c_str())};
    return keyed_path(broker, ns, cls, keys);
}

// ---- two-reference associations -------------------------------------------------

struct RoleNames {
    const char *first;
    const char *second;
};
constexpr RoleNames kSettingRoles{"ManagedElement", "SettingData"};
constexpr RoleNames kCollectionRoles{"Collection", "Member"};
constexpr RoleNames kHostingRoles{"Antecedent", "Dependent"};

CMPIObjectPath *link_path(const char *cls, const char *ns, RoleNames roles,
                          const CMPIObjectPath *first, const CMPIObjectPath *second,
                          const CMPIBroker *broker) {
    if (roles.first == nullptr || roles.second == nullptr) return nullptr;
    const Value keys[] = {Value::reference(roles.first, first),
                          Value::reference(roles.second, second)};
    return keyed_path(broker, ns, cls, keys);
}

CMPIInstance *link_instance(const char *cls, const char *ns, RoleNames roles,
                            const CMPIObjectPath *first, const CMPIObjectPath *second,
                            const char **props, const CMPIBroker *broker) {
    if (roles.first == nullptr || roles.second == nullptr) return nullptr;
    const Value keys[] = {Value::reference(roles.first, first),
                          Value::reference(roles.second, second)};
    return keyed_instance(broker, ns, cls, keys, {}, props);
}

CMPIObjectPath *zone_set_end(const char *ns, const ZoneSetRecord *record,
                             const CMPIBroker *broker) {
    return record_path(kZoneSetClass, ns, record, broker);
}
CMPIObjectPath *zone_end(const char *ns, const ZoneRecord *record, const CMPIBroker *broker) {
    return record_path(kZoneClass, ns, record, broker);
}
CMPIObjectPath *alias_end(const char *ns, const ZoneAliasRecord *record, const CMPIBroker *broker) {
    return record_path(kZoneAliasClass, ns, record, broker);
}
CMPIObjectPath *member_end(const char *ns, const ZoneMemberRecord *record,
                           const CMPIBroker *broker) {
    return record_path(kZoneMemberClass, ns, record, broker);
}
CMPIObjectPath *vsan_end(const char *ns, const VsanEntry *vsan, const CMPIBroker *broker) {
    if (vsan == nullptr) return nullptr;
    return vsan_path(kVsanClass, ns, vsan->vsan, broker);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

// ---- zone service and hosted service ------------------------------------------------

CMPIInstance *zone_service_build_instance(const char *cls, const char *ns, int vsan,
                                          const char **props, int /*queue*/,
                                          const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    NumberText name(vsan);
    static constexpr char kElementNamePrefix[] = "Zone service of VSAN ";
    char element_name[sizeof kElementNamePrefix + 16];
    std::memcpy(element_name, kElementNamePrefix, sizeof kElementNamePrefix - 1);
    std::strcpy(element_name + sizeof kElementNamePrefix - 1, name.c_str());
    const Value keys[] = {Value::text("SystemCreationClassName", kVsanClass),
                          Value::text("SystemName", name.c_str()),
                          Value::text("CreationClassName", cls), Value::text("Name", name.c_str())};
    const Value properties[] = {
        Value::text("ElementName", element_name),
        Value::uint16("SessionState", kSessionStateNotApplicable),
        Value::uint16("RequestedSessionState", kRequestedSessionStateNoChange)};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *zone_service_fill_reference(const char *cls, const char *ns, int vsan,
                                            const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return zone_service_path(cls, ns, vsan, broker);
}

// The domain entry adds nothing to a VSAN's identity; it may be null.
CMPIInstance *hosted_service_build_instance(const char *cls, const char *ns, const VsanEntry *vsan,
                                            const DomainEntry * /*domain*/, const char **props,
                                            const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr) return nullptr;
    return link_instance(cls, ns, kHostingRoles, vsan_end(ns, vsan, broker),
                         zone_service_path(kZoneServiceClass, ns, vsan->vsan, broker), props,
                         broker);
}

CMPIObjectPath *hosted_service_fill_reference(const char *cls, const char *ns,
                                              const VsanEntry *vsan, const DomainEntry * /*domain*/,
                                              const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr) return nullptr;
    return link_path(cls, ns, kHostingRoles, vsan_end(ns, vsan, broker),
                     zone_service_path(kZoneServiceClass, ns, vsan->vsan, broker), broker);
}

// ---- zone sets, zones, aliases, members, device aliases ------------------------------

CMPIInstance *zone_set_build_instance(const char *cls, const char *ns, const ZoneSetRecord *record,
                                      const char **props, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (record == nullptr) return nullptr;
    FieldText id(record->instance_id);
    FieldText name(record->name);
    const Value keys[] = {Value::text("InstanceID", id.c_str())};
    const Value properties[] = {Value::text("ElementName", name.c_str()),
                                Value::boolean("Active", active_of_object(id.c_str()))};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *zone_set_fill_reference(const char *cls, const char *ns,
                                        const ZoneSetRecord *record, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return record_path(cls, ns, record, broker);
}

CMPIInstance *zone_build_instance(const char *cls, const char *ns, const ZoneRecord *record,
                                  const char **props, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (record == nullptr) return nullptr;
    FieldText id(record->instance_id);
    FieldText name(record->name);
    const Value keys[] = {Value::text("InstanceID", id.c_str())};
    const Value properties[] = {Value::text("ElementName", name.c_str()),
                                Value::boolean("Active", active_of_object(id.c_str())),
                                Value::uint16("ZoneType", kZoneTypeDefault)};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *zone_fill_reference(const char *cls, const char *ns, const ZoneRecord *record,
                                    const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return record_path(cls, ns, record, broker);
}

CMPIInstance *zone_alias_build_instance(const char *cls, const char *ns,
                                        const ZoneAliasRecord *record, const char **props,
                                        const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (record == nullptr) return nullptr;
    FieldText id(record->instance_id);
    FieldText name(record->name);
    const Value keys[] = {Value::text("InstanceID", id.c_str())};
    const Value properties[] = {Value::text("ElementName", name.c_str()),
                                Value::text("CollectionAlias", name.c_str()),
                                Value::boolean("Active", active_of_object(id.c_str()))};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *zone_alias_fill_reference(const char *cls, const char *ns,
                                          const ZoneAliasRecord *record, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return record_path(cls, ns, record, broker);
}

CMPIInstance *zone_member_build_instance(const char *cls, const char *ns,
                                         const ZoneMemberRecord *record, const char **props,
                                         const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (record == nullptr) return nullptr;
    FieldText id(record->instance_id);
    FieldText member(record->member_value);
    const Value keys[] = {Value::text("InstanceID", id.c_str())};
    const Value properties[] = {Value::text("ElementName", member.c_str()),
                                Value::uint16("ConnectivityMemberType", record->cim_member_type),
                                Value::text("ConnectivityMemberID", member.c_str()),
                                Value::boolean("Active", active_of_member(id.c_str()))};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *zone_member_fill_reference(const char *cls, const char *ns,
                                           const ZoneMemberRecord *record,
                                           const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return record_path(cls, ns, record, broker);
}

// A device alias is known by its pWWN, in the colon form the provider's
// WWN reader takes back.
CMPIInstance *device_alias_build_instance(const char *cls, const char *ns,
                                          const DeviceAliasEntry *entry, const char **props,
                                          const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (entry == nullptr) return nullptr;
    char pwwn[24];
    zonesim::format_wwn(entry->pwwn, pwwn);
    FieldText name(entry->name);
    const Value keys[] = {Value::text("InstanceID", pwwn)};
    const Value properties[] = {Value::text("ElementName", name.c_str()),
                                Value::text("PWWN", pwwn)};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *device_alias_fill_reference(const char *cls, const char *ns,
                                            const DeviceAliasEntry *entry,
                                            const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (entry == nullptr) return nullptr;
    char pwwn[24];
    zonesim::format_wwn(entry->pwwn, pwwn);
    return instance_id_path(broker, ns, cls, pwwn);
}

// ---- element setting data: zone or alias -> member -----------------------------------

CMPIInstance *esd_build_instance(const char *cls, const char *ns, const CMPIObjectPath *element,
                                 const CMPIObjectPath *setting, const char **props,
                                 const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return link_instance(cls, ns, kSettingRoles, element, setting, props, broker);
}

CMPIObjectPath *esd_fill_reference_zoneZoneMember(const char *cls, const char *ns,
                                                  const ZoneRecord *zone,
                                                  const ZoneMemberRecord *member,
                                                  const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (zone == nullptr || member == nullptr) return nullptr;
    return link_path(cls, ns, kSettingRoles, zone_end(ns, zone, broker),
                     member_end(ns, member, broker), broker);
}

CMPIObjectPath *esd_fill_reference_zoneAliasZoneMember(const char *cls, const char *ns,
                                                       const ZoneAliasRecord *alias,
                                                       const ZoneMemberRecord *member,
                                                       const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (alias == nullptr || member == nullptr) return nullptr;
    return link_path(cls, ns, kSettingRoles, alias_end(ns, alias, broker),
                     member_end(ns, member, broker), broker);
}

CMPIInstance *esd_build_instance_zoneZoneMember(const char *cls, const char *ns,
                                                const ZoneRecord *zone,
                                                const ZoneMemberRecord *member, const char **props,
                                                const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (zone == nullptr || member == nullptr) return nullptr;
    return link_instance(cls, ns, kSettingRoles, zone_end(ns, zone, broker),
                         member_end(ns, member, broker), props, broker);
}

CMPIInstance *esd_build_instance_zoneAliasZoneMember(const char *cls, const char *ns,
                                                     const ZoneAliasRecord *alias,
                                                     const ZoneMemberRecord *member,
                                                     const char **props, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (alias == nullptr || member == nullptr) return nullptr;
    return link_instance(cls, ns, kSettingRoles, alias_end(ns, alias, broker),
                         member_end(ns, member, broker), props, broker);
}

// ---- member of collection: zone set -> zone, zone -> alias ----------------------------

CMPIInstance *zmoc_build_instance_MemberCollection(const char *cls, const char *ns,
                                                   const CMPIObjectPath *collection,
                                                   const CMPIObjectPath *member, const char **props,
                                                   const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return link_instance(cls, ns, kCollectionRoles, collection, member, props, broker);
}

CMPIObjectPath *zmoc_fill_reference_zoneSetZone(const char *cls, const char *ns,
                                                const ZoneSetRecord *zone_set,
                                                const ZoneRecord *zone, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (zone_set == nullptr || zone == nullptr) return nullptr;
    return link_path(cls, ns, kCollectionRoles, zone_set_end(ns, zone_set, broker),
                     zone_end(ns, zone, broker), broker);
}

CMPIObjectPath *zmoc_fill_reference(const char *cls, const char *ns, const ZoneRecord *zone,
                                    const ZoneAliasRecord *alias, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (zone == nullptr || alias == nullptr) return nullptr;
    return link_path(cls, ns, kCollectionRoles, zone_end(ns, zone, broker),
                     alias_end(ns, alias, broker), broker);
}

CMPIInstance *zmoc_build_instance_zoneSetZone(const char *cls, const char *ns,
                                              const ZoneSetRecord *zone_set, const ZoneRecord *zone,
                                              const char **props, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (zone_set == nullptr || zone == nullptr) return nullptr;
    return link_instance(cls, ns, kCollectionRoles, zone_set_end(ns, zone_set, broker),
                         zone_end(ns, zone, broker), props, broker);
}

CMPIInstance *zmoc_build_instance(const char *cls, const char *ns, const ZoneRecord *zone,
                                  const ZoneAliasRecord *alias, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (zone == nullptr || alias == nullptr) return nullptr;
    return link_instance(cls, ns, kCollectionRoles, zone_end(ns, zone, broker),
                         alias_end(ns, alias, broker), nullptr, broker);
}

// ---- the VSAN and what it hosts ---------------------------------------------------------

CMPIInstance *vsan_build_instance(const char *cls, const char *ns, const VsanEntry *vsan,
                                  const DomainEntry * /*domain*/, const char **props,
                                  const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr) return nullptr;
    NumberText name(vsan->vsan);
    char element_name[SIM_NAME_LEN + 1];
    if (!copy_vsan_name(*vsan, element_name)) {
        std::snprintf(element_name, sizeof element_name, "VSAN%04d", vsan->vsan);
    }
    const Value keys[] = {Value::text("CreationClassName", cls), Value::text("Name", name.c_str())};
    const Value properties[] = {Value::text("ElementName", element_name),
                                Value::text("NameFormat", kVsanNameFormat)};
    return keyed_instance(broker, ns, cls, keys, properties, props);
}

CMPIObjectPath *vsan_fill_reference(const char *cls, const char *ns, const VsanEntry *vsan,
                                    const DomainEntry * /*domain*/, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr) return nullptr;
    return vsan_path(cls, ns, vsan->vsan, broker);
}

CMPIInstance *hosted_collection_build_instance_zset(const char *cls, const char *ns,
                                                    const VsanEntry *vsan,
                                                    const DomainEntry * /*domain*/,
                                                    const ZoneSetRecord *zone_set,
                                                    const char **props, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr || zone_set == nullptr) return nullptr;
    return link_instance(cls, ns, kHostingRoles, vsan_end(ns, vsan, broker),
                         zone_set_end(ns, zone_set, broker), props, broker);
}

CMPIObjectPath *hosted_collection_fill_reference_zset(const char *cls, const char *ns,
                                                      const VsanEntry *vsan,
                                                      const DomainEntry * /*domain*/,
                                                      const ZoneSetRecord *zone_set,
                                                      const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr || zone_set == nullptr) return nullptr;
    return link_path(cls, ns, kHostingRoles, vsan_end(ns, vsan, broker),
                     zone_set_end(ns, zone_set, broker), broker);
}

CMPIInstance *hosted_collection_build_instance_zone(const char *cls, const char *ns,
                                                    const VsanEntry *vsan,
                                                    const DomainEntry * /*domain*/,
                                                    const ZoneRecord *zone,
                                                    const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr || zone == nullptr) return nullptr;
    return link_instance(cls, ns, kHostingRoles, vsan_end(ns, vsan, broker),
                         zone_end(ns, zone, broker), nullptr, broker);
}

CMPIObjectPath *hosted_collection_fill_reference_zone(const char *cls, const char *ns,
                                                      const VsanEntry *vsan,
                                                      const DomainEntry * /*domain*/,
                                                      const ZoneRecord *zone,
                                                      const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    if (vsan == nullptr || zone == nullptr) return nullptr;
    return link_path(cls, ns, kHostingRoles, vsan_end(ns, vsan, broker), zone_end(ns, zone, broker),
                     broker);
}

CMPIObjectPath *zone_hosted_collection_fill_reference(const char *cls, const char *ns,
                                                      const CMPIObjectPath *vsan_ref,
                                                      const CMPIObjectPath *collection_ref,
                                                      const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return link_path(cls, ns, kHostingRoles, vsan_ref, collection_ref, broker);
}

CMPIInstance *association_class_build_instance_path(const char *cls, const char *ns,
                                                    const CMPIObjectPath *ref1,
                                                    const CMPIObjectPath *ref2, const char *name1,
                                                    const char *name2, const CMPIBroker *broker) {
    if (zonesim::injectFault(__func__)) return nullptr;
    return link_instance(cls, ns, RoleNames{name1, name2}, ref1, ref2, nullptr, broker);
}

}  // extern "C"
#pragma GCC visibility pop
