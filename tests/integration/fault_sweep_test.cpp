// Every provider operation over the example fabric, with the simulated
// switch failing in the middle of the request (ZONE_SIM_FAIL_AT, see
// src/sim/fault_injection.h). For k = 1, 2, ... the switch fails the k-th
// counted platform call of the request and every call after it, until the
// request no longer reaches k. Each run must end with a status the
// operation documents, deliver only a prefix of the full answer (reads), and
// change the switch all or nothing (deletes and methods). A second pass
// fails the k-th call alone: the provider must go on past it without
// delivering anything that isn't part of the full answer. Under the
// sanitizer build every run is also checked for leaks.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <set>

#include "switch_fixture.h"

namespace zonetest {
namespace {

using Operation = std::function<cmpihost::Status(cmpihost::Request &)>;

// A request never makes more platform calls than this over the example
// fabric; a sweep that gets past it is not converging.
constexpr long kMaxCalls = 5000;

// Standard error of the process pointed at a temporary file for a while;
// the switch writes one line there per injected failure.
class StderrCapture {
  public:
    StderrCapture() : file_(std::tmpfile()) {
        std::fflush(stderr);
        saved_ = dup(STDERR_FILENO);
        dup2(fileno(file_), STDERR_FILENO);
    }
    ~StderrCapture() {
        restore();
        std::fclose(file_);
    }
    StderrCapture(const StderrCapture &) = delete;
    StderrCapture &operator=(const StderrCapture &) = delete;

    std::string text() {
        restore();
        std::string out;
        std::rewind(file_);
        char buffer[4096];
        std::size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, file_)) > 0) out.append(buffer, n);
        return out;
    }

  private:
    void restore() {
        if (saved_ < 0) return;
        std::fflush(stderr);
        dup2(saved_, STDERR_FILENO);
        close(saved_);
        saved_ = -1;
    }
    std::FILE *file_;
    int saved_ = -1;
};

// The failure plan of the switch for the requests made while it lives.
class FailurePlan {
  public:
    FailurePlan(long fail_at, long fail_count) {
        if (fail_at > 0) setenv("ZONE_SIM_FAIL_AT", std::to_string(fail_at).c_str(), 1);
        if (fail_count > 0) setenv("ZONE_SIM_FAIL_COUNT", std::to_string(fail_count).c_str(), 1);
    }
    ~FailurePlan() {
        unsetenv("ZONE_SIM_FAIL_AT");
        unsetenv("ZONE_SIM_FAIL_COUNT");
    }
    FailurePlan(const FailurePlan &) = delete;
    FailurePlan &operator=(const FailurePlan &) = delete;
};

// What one request gave back.
struct Outcome {
    cmpihost::Status status;
    std::vector<std::string> items;  // deliveries, as text, in order
    std::string return_text;         // the last text handed to the result
    std::string faults;              // the switch's lines for injected failures
    int done = 0;                    // returnDone calls
    bool reached() const { return !faults.empty(); }
};

// How deliveries are compared: whole instances, or only which objects they
// are (their paths).
enum class Rendering { Whole, Identity };

std::string rendered(const cmpihost::Delivery &d, Rendering rendering) {
    switch (d.kind) {
        case cmpihost::Delivery::Kind::Instance:
            if (rendering == Rendering::Identity)
                return "instance " + canonical(d.instance->ft->getObjectPath(d.instance, nullptr));
            return "instance " + cmpihost::instanceToString(d.instance);
        case cmpihost::Delivery::Kind::ObjectPath:
            return "path " + canonical(d.path);
        case cmpihost::Delivery::Kind::Data:
            return "data " + cmpihost::dataText(d.data);
    }
    return "?";
}

bool is_prefix(const std::vector<std::string> &part, const std::vector<std::string> &whole) {
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

bool is_subsequence(const std::vector<std::string> &part, const std::vector<std::string> &whole) {
    auto next = whole.begin();
    for (const std::string &item : part) {
        next = std::find(next, whole.end(), item);
        if (next == whole.end()) return false;
        ++next;
    }
    return true;
}

std::string joined(const std::vector<std::string> &items) {
    std::string out;
    for (const std::string &item : items) out += "  " + item + "\n";
    return out;
}

class FaultSweepTest : public SwitchTest {
  protected:
    // A sweep in which the switch never failed tested nothing.
    void TearDown() override {
        EXPECT_GT(faulted_requests_, 0) << "the switch's test mode never failed a call";
    }
    static void TearDownTestSuite() {
        std::printf("[ fault sweep ] %ld operations, %ld requests\n", operations_, requests_);
        SwitchTest::TearDownTestSuite();
    }

    Outcome attempt(const Operation &operation, long fail_at, long fail_count = 0) {
        ++requests_;
        Outcome result;
        FailurePlan plan(fail_at, fail_count);
        cmpihost::Request request;
        {
            QuietStdout quiet;
            StderrCapture capture;
            result.status = operation(request);
            result.faults = capture.text();
        }
        if (result.reached()) ++faulted_requests_;
        result.done = request.doneCount();
        for (const cmpihost::Delivery &d : request.deliveries())
            result.items.push_back(rendered(d, rendering_));
        result.return_text = cmpihost::returnedText(request);
        return result;
    }

    // The sweep of one read operation: every failing run delivers a prefix
    // of the full answer with a status of the allowed set, and nothing at
    // all with an error status; failing one call alone delivers part of the
    // full answer, in its order. With reports_missing (the getInstance
    // handlers that report what they can't deliver), an empty answer comes
    // with an error status.
    void sweep_read(const std::string &label, const Operation &operation,
                    const std::set<int> &allowed, Rendering rendering = Rendering::Whole,
                    bool reports_missing = false) {
        ++operations_;
        rendering_ = rendering;
        const Outcome full = attempt(operation, 0);
        ASSERT_FALSE(full.reached()) << label;
        ASSERT_EQ(full.status.rc, CMPI_RC_OK) << label;
        for (long k = 1; k <= kMaxCalls; ++k) {
            const Outcome failed = attempt(operation, k);
            if (!failed.reached()) {
                EXPECT_EQ(failed.items, full.items) << label;
                return;
            }
            const std::string where =
                label + ", failing from call " + std::to_string(k) + "\n" + failed.faults;
            EXPECT_TRUE(allowed.count(failed.status.rc)) << where << describe(failed.status);
            EXPECT_TRUE(failed.status.rc == CMPI_RC_OK || failed.items.empty())
                << where << describe(failed.status) << " with deliveries";
            if (reports_missing) {
                EXPECT_TRUE(failed.status.rc != CMPI_RC_OK || !failed.items.empty())
                    << where << "nothing delivered, yet " << describe(failed.status);
            }
            EXPECT_TRUE(is_prefix(failed.items, full.items))
                << where << "delivered:\n"
                << joined(failed.items) << "full answer:\n"
                << joined(full.items);
            const Outcome hiccup = attempt(operation, k, 1);
            EXPECT_TRUE(allowed.count(hiccup.status.rc)) << label << ", call " << k << " alone";
            EXPECT_TRUE(is_subsequence(hiccup.items, full.items))
                << label << ", failing call " << k << " alone\n"
                << hiccup.faults << "delivered:\n"
                << joined(hiccup.items) << "full answer:\n"
                << joined(full.items);
            if (HasFailure()) return;
        }
        ADD_FAILURE() << label << " still reaches call " << kMaxCalls;
    }

    // The sweep of one change (delete or method) that succeeds without
    // failures: every run starts from the example fabric and leaves the
    // switch either untouched or exactly as the full run leaves it; a run
    // that answers a failure leaves it untouched, and a run that answers
    // success leaves it changed (unless the change is committed by a call
    // whose outcome the operation doesn't report: commit_unreported).
    void sweep_change(const std::string &label, const Operation &operation,
                      const std::set<int> &allowed,
                      const std::function<bool(const Outcome &)> &succeeded,
                      bool commit_unreported = false) {
        ++operations_;
        rendering_ = Rendering::Whole;
        const std::string pristine = reload_and_dump();
        const Outcome full = attempt(operation, 0);
        ASSERT_FALSE(full.reached()) << label;
        ASSERT_TRUE(succeeded(full))
            << label << ": " << describe(full.status) << " " << full.return_text;
        const std::string changed = dump();
        ASSERT_TRUE(changed != pristine) << label << " changes nothing";
        for (long fail_count : {0L, 1L}) {
            for (long k = 1; k <= kMaxCalls; ++k) {
                reload_and_dump();
                const Outcome failed = attempt(operation, k, fail_count);
                const std::string state = dump();
                if (!failed.reached()) {
                    EXPECT_EQ(failed.items, full.items) << label;
                    EXPECT_TRUE(state == changed) << label << ": the full run's change is missing";
                    break;
                }
                const std::string where = label + ", failing " +
                                          (fail_count == 1 ? "call " : "from call ") +
                                          std::to_string(k) + "\n" + failed.faults;
                EXPECT_TRUE(allowed.count(failed.status.rc)) << where << describe(failed.status);
                EXPECT_FALSE(failed.return_text.empty()) << where << "no answer text";
                EXPECT_GE(failed.done, 1) << where << "result never closed";
                EXPECT_TRUE(state == pristine || state == changed)
                    << where << "the switch was left half changed";
                if (!succeeded(failed)) {
                    EXPECT_TRUE(state == pristine)
                        << where << "answered " << describe(failed.status) << " "
                        << failed.return_text << " but the change was made";
                } else if (!commit_unreported) {
                    EXPECT_TRUE(state == changed) << where << "answered success, changed nothing";
                }
                if (HasFailure()) return;
                if (k == kMaxCalls) ADD_FAILURE() << label << " still reaches call " << k;
            }
        }
    }

    std::string dump() {
        std::string out;
        EXPECT_EQ(run_zonecim({"fabric", "dump"}, &out), 0);
        return out;
    }
    std::string reload_and_dump() {
        load_fabric(std::string(ZONE_SOURCE_DIR) + "/examples/fabric.json");
        return dump();
    }

    // Paths of the current request.
    static CMPIObjectPath *zoning_path(cmpihost::Request &request, const char *cls,
                                       const std::string &id) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::addStringKey(path, "InstanceID", id);
        return path;
    }
    static CMPIObjectPath *zone_service(cmpihost::Request &request, int vsan) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, "VORNA_ZoneService");
        cmpihost::addStringKey(path, "SystemCreationClassName", "VORNA_Vsan");
        cmpihost::addStringKey(path, "SystemName", std::to_string(vsan));
        cmpihost::addStringKey(path, "CreationClassName", "VORNA_ZoneService");
        cmpihost::addStringKey(path, "Name", std::to_string(vsan));
        return path;
    }
    static CMPIObjectPath *pair_path(cmpihost::Request &request, const char *cls,
                                     const char *first_role, CMPIObjectPath *first,
                                     const char *second_role, CMPIObjectPath *second) {
        CMPIObjectPath *path = request.newObjectPath(kNamespace, cls);
        cmpihost::addReferenceKey(path, first_role, first);
        cmpihost::addReferenceKey(path, second_role, second);
        return path;
    }

    Rendering rendering_ = Rendering::Whole;
    long faulted_requests_ = 0;
    static inline long operations_ = 0;
    static inline long requests_ = 0;
};

const char *const kServedClasses[] = {"VORNA_ZoneSet",
                                      "VORNA_Zone",
                                      "VORNA_ZoneAlias",
                                      "VORNA_DeviceAlias",
                                      "VORNA_ZoneMemberSettingData",
                                      "VORNA_ZoneService",
                                      "VORNA_HostedService",
                                      "VORNA_ZoneMemberOfCollection",
                                      "VORNA_ElementSettingData",
                                      "VORNA_ZoneHostedCollection",
                                      "VORNA_HostedCollection"};

// Statuses a getInstance may end with, by class: the zoning objects report
// a lookup or build failure as not found, the zone service as failed, the
// other handlers leave the status as it was.
std::set<int> get_instance_statuses(const std::string &cls) {
    if (cls == "VORNA_ZoneSet" || cls == "VORNA_Zone" || cls == "VORNA_ZoneAlias" ||
        cls == "VORNA_ZoneMemberSettingData")
        return {CMPI_RC_OK, CMPI_RC_ERR_NOT_FOUND};
    if (cls == "VORNA_ZoneService") return {CMPI_RC_OK, CMPI_RC_ERR_FAILED};
    return {CMPI_RC_OK};
}

TEST_F(FaultSweepTest, ReadsDeliverAPrefixOfTheirAnswer) {
    for (const char *cls : kServedClasses) {
        const std::string name = cls;
        sweep_read("enumInstanceNames " + name,
                   [&](cmpihost::Request &request) {
                       return provider().enumInstanceNames(request, class_path(request, name));
                   },
                   {CMPI_RC_OK});
        sweep_read("enumInstances " + name,
                   [&](cmpihost::Request &request) {
                       return provider().enumInstances(request, class_path(request, name), nullptr);
                   },
                   {CMPI_RC_OK});

        cmpihost::Request listing;
        std::vector<const CMPIObjectPath *> targets;
        {
            QuietStdout quiet;
            provider().enumInstanceNames(listing, class_path(listing, name));
        }
        for (const cmpihost::Delivery &d : listing.deliveries()) targets.push_back(d.path);
        if (targets.empty()) targets.push_back(class_path(listing, name));
        // A device alias whose name lookup fails is still delivered, built
        // with an empty name as for a pWWN that has no alias: the lookup's
        // code is only traced. Only which object comes back is compared.
        const Rendering rendering =
            name == "VORNA_DeviceAlias" ? Rendering::Identity : Rendering::Whole;
        for (const CMPIObjectPath *target : targets) {
            sweep_read(
                "getInstance " + canonical(target),
                [&](cmpihost::Request &request) {
                    return provider().getInstance(request, target, nullptr);
                },
                get_instance_statuses(name), rendering, get_instance_statuses(name).size() > 1);
        }
        if (HasFatalFailure()) return;
    }
}

TEST_F(FaultSweepTest, AssociationsDeliverAPrefixOfTheirAnswer) {
    const std::set<int> statuses{CMPI_RC_OK, CMPI_RC_ERR_INVALID_PARAMETER};
    for (const char *cls : {"VORNA_ZoneService", "VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias",
                            "VORNA_ZoneMemberSettingData", "VORNA_DeviceAlias"}) {
        cmpihost::Request listing;
        {
            QuietStdout quiet;
            provider().enumInstanceNames(listing, class_path(listing, cls));
        }
        for (const cmpihost::Delivery &d : listing.deliveries()) {
            const CMPIObjectPath *source = d.path;
            const std::string text = canonical(source);
            sweep_read(
                "associatorNames " + text,
                [&](cmpihost::Request &request) {
                    return provider().associatorNames(request, source, nullptr, nullptr, nullptr,
                                                      nullptr);
                },
                statuses);
            sweep_read(
                "associators " + text,
                [&](cmpihost::Request &request) {
                    return provider().associators(request, source, nullptr, nullptr, nullptr,
                                                  nullptr, nullptr);
                },
                statuses);
            sweep_read(
                "referenceNames " + text,
                [&](cmpihost::Request &request) {
                    return provider().referenceNames(request, source, nullptr, nullptr);
                },
                statuses);
            sweep_read(
                "references " + text,
                [&](cmpihost::Request &request) {
                    return provider().references(request, source, nullptr, nullptr, nullptr);
                },
                statuses);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(FaultSweepTest, DeletesChangeAllOrNothing) {
    const std::set<int> statuses{CMPI_RC_OK, CMPI_RC_ERR_FAILED, CMPI_RC_ERR_INVALID_PARAMETER,
                                 CMPI_RC_ERROR};
    auto deleted = [](const Outcome &outcome) {
        return outcome.status.rc == CMPI_RC_OK && outcome.return_text == "Success";
    };
    struct Target {
        const char *label;
        std::function<CMPIObjectPath *(cmpihost::Request &)> path;
    };
    const Target targets[] = {
        {"zone set",
         [](cmpihost::Request &r) { return zoning_path(r, "VORNA_ZoneSet", "20^2^0"); }},
        {"zone", [](cmpihost::Request &r) { return zoning_path(r, "VORNA_Zone", "10^4^0"); }},
        {"zone alias",
         [](cmpihost::Request &r) { return zoning_path(r, "VORNA_ZoneAlias", "20^6^0"); }},
        {"zone member",
         [](cmpihost::Request &r) {
             return zoning_path(r, "VORNA_ZoneMemberSettingData", "20^32768^fc2/5^0");
         }},
        {"zone set holding a zone",
         [](cmpihost::Request &r) {
             return pair_path(r, "VORNA_ZoneMemberOfCollection", "Collection",
                              zoning_path(r, "VORNA_ZoneSet", "10^1^0"), "Member",
                              zoning_path(r, "VORNA_Zone", "10^3^0"));
         }},
        {"zone holding an alias",
         [](cmpihost::Request &r) {
             return pair_path(r, "VORNA_ZoneMemberOfCollection", "Collection",
                              zoning_path(r, "VORNA_Zone", "10^2^0"), "Member",
                              zoning_path(r, "VORNA_ZoneAlias", "10^6^0"));
         }},
        {"zone's member",
         [](cmpihost::Request &r) {
             return pair_path(r, "VORNA_ElementSettingData", "ManagedElement",
                              zoning_path(r, "VORNA_Zone", "10^4^0"), "SettingData",
                              zoning_path(r, "VORNA_ZoneMemberSettingData", "10^4^10:17^0"));
         }},
        {"alias's member",
         [](cmpihost::Request &r) {
             return pair_path(
                 r, "VORNA_ElementSettingData", "ManagedElement",
                 zoning_path(r, "VORNA_ZoneAlias", "20^6^0"), "SettingData",
                 zoning_path(r, "VORNA_ZoneMemberSettingData", "20^2^31:00:00:00:01:8c:22:30^0"));
         }},
    };
    for (const Target &target : targets) {
        sweep_change(
            std::string("deleteInstance of a ") + target.label,
            [&](cmpihost::Request &request) {
                return provider().deleteInstance(request, target.path(request));
            },
            statuses, deleted);
        if (HasFatalFailure()) return;
    }
}

TEST_F(FaultSweepTest, MethodsChangeAllOrNothing) {
    auto succeeded = [](const Outcome &outcome) {
        return outcome.status.rc == CMPI_RC_OK && outcome.return_text == "Success";
    };
    using ArgsMaker = std::function<void(cmpihost::Request &, CMPIArgs *)>;
    struct Call {
        const char *method;
        int vsan;
        ArgsMaker args;
        bool commit_unreported;
    };
    auto uint16_arg = [](CMPIArgs *args, const char *name, CMPIUint16 number) {
        CMPIValue value{};
        value.uint16 = number;
        cmpihost::addValueArg(args, name, value, CMPI_uint16);
    };
    const Call calls[] = {
        {"CreateZoneSet", 10,
         [](cmpihost::Request &, CMPIArgs *a) {
             cmpihost::addStringArg(a, "ZoneSetName", "fault_cfg");
         },
         false},
        {"CreateZone", 10,
         [&](cmpihost::Request &, CMPIArgs *a) {
             cmpihost::addStringArg(a, "ZoneName", "z_fault");
             uint16_arg(a, "ZoneType", 2);
             uint16_arg(a, "ZoneSubType", 4);
         },
         false},
        {"CreateZoneAlias", 10,
         [](cmpihost::Request &, CMPIArgs *a) {
             cmpihost::addStringArg(a, "CollectionAlias", "fault_alias");
         },
         false},
        {"CreateZoneMembershipSettingData", 10,
         [&](cmpihost::Request &r, CMPIArgs *a) {
             uint16_arg(a, "ConnectivityMemberType", 2);
             cmpihost::addStringArg(a, "ConnectivityMemberID", "3100000000990001");
             cmpihost::addReferenceArg(a, "SystemSpecificCollection",
                                       zoning_path(r, "VORNA_Zone", "10^4^0"));
         },
         false},
        {"AddZone", 20,
         [](cmpihost::Request &r, CMPIArgs *a) {
             cmpihost::addReferenceArg(a, "ZoneSet", zoning_path(r, "VORNA_ZoneSet", "20^1^0"));
             cmpihost::addReferenceArg(a, "Zone", zoning_path(r, "VORNA_Zone", "20^5^0"));
         },
         false},
        {"AddZoneAlias", 10,
         [](cmpihost::Request &r, CMPIArgs *a) {
             cmpihost::addReferenceArg(a, "Zone", zoning_path(r, "VORNA_Zone", "10^3^0"));
             cmpihost::addReferenceArg(a, "ZoneAlias", zoning_path(r, "VORNA_ZoneAlias", "10^6^0"));
         },
         false},
        {"AddZoneMembershipSettingData", 10,
         [](cmpihost::Request &r, CMPIArgs *a) {
             cmpihost::addReferenceArg(a, "SystemSpecificCollection",
                                       zoning_path(r, "VORNA_Zone", "10^2^0"));
             cmpihost::addReferenceArg(
                 a, "ZoneMembershipSettingData",
                 zoning_path(r, "VORNA_ZoneMemberSettingData", "10^4^10:17^0"));
         },
         false},
        {"ActivateZoneSet", 20,
         [](cmpihost::Request &r, CMPIArgs *a) {
             cmpihost::addReferenceArg(a, "ZoneSet", zoning_path(r, "VORNA_ZoneSet", "20^2^0"));
             CMPIValue on{};
             on.boolean = 1;
             cmpihost::addValueArg(a, "Activate", on, CMPI_boolean);
         },
         false},
        // The outcome of a device-alias change is that of its staging call;
        // a failed commit after a staged change still answers success.
        {"CreateDeviceAlias", 10,
         [](cmpihost::Request &, CMPIArgs *a) {
             cmpihost::addStringArg(a, "DeviceAliasName", "fault_hba0");
             cmpihost::addStringArg(a, "PWWN", "31:00:00:00:00:99:00:01");
         },
         true},
        {"RemoveDeviceAlias", 10,
         [](cmpihost::Request &, CMPIArgs *a) {
             cmpihost::addStringArg(a, "DeviceAliasName", "db01_hba0");
         },
         true},
    };
    for (const Call &call : calls) {
        sweep_change(
            call.method,
            [&](cmpihost::Request &request) {
                CMPIArgs *in = request.newArgs();
                call.args(request, in);
                return provider().invokeMethod(request, zone_service(request, call.vsan),
                                               call.method, in, request.newArgs());
            },
            {CMPI_RC_OK}, succeeded, call.commit_unreported);
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace zonetest
