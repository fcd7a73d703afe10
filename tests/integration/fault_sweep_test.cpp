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

// What one request gave back.
struct Result {
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

    // One request with the switch failing from call fail_at on (0: never),
    // fail_count calls of them (0: all); standard error, where the switch
    // writes a line per injected failure, is read back.
    Result attempt(const Operation &operation, long fail_at, long fail_count = 0) {
        ++requests_;
        Result result;
        if (fail_at > 0) setenv("ZONE_SIM_FAIL_AT", std::to_string(fail_at).c_str(), 1);
        if (fail_count > 0) setenv("ZONE_SIM_FAIL_COUNT", std::to_string(fail_count).c_str(), 1);
        cmpihost::Request request;
        {
            QuietStdout quiet;
            std::FILE *capture = std::tmpfile();
            std::fflush(stderr);
            const int saved = dup(STDERR_FILENO);
            dup2(fileno(capture), STDERR_FILENO);
            result.status = operation(request);
            std::fflush(stderr);
            dup2(saved, STDERR_FILENO);
            close(saved);
            std::rewind(capture);
            char buffer[4096];
            for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, capture)) > 0;)
                result.faults.append(buffer, n);
            std::fclose(capture);
        }
        unsetenv("ZONE_SIM_FAIL_AT");
        unsetenv("ZONE_SIM_FAIL_COUNT");
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
        const Result full = attempt(operation, 0);
        ASSERT_FALSE(full.reached()) << label;
        ASSERT_EQ(full.status.rc, CMPI_RC_OK) << label;
        for (long k = 1; k <= kMaxCalls; ++k) {
            const Result failed = attempt(operation, k);
            if (!failed.reached()) {
                EXPECT_EQ(failed.items, full.items) << label;
                return;
            }
            const std::string where = label + ", failing from call " + std::to_string(k) + "\n" +
                                      failed.faults + describe(failed.status) + "\ndelivered:\n" +
                                      joined(failed.items) + "full answer:\n" + joined(full.items);
            EXPECT_TRUE(allowed.count(failed.status.rc)) << where;
            EXPECT_TRUE(failed.status.rc == CMPI_RC_OK || failed.items.empty()) << where;
            EXPECT_TRUE(!reports_missing || failed.status.rc != CMPI_RC_OK || !failed.items.empty())
                << where;
            EXPECT_TRUE(failed.items.size() <= full.items.size() &&
                        std::equal(failed.items.begin(), failed.items.end(), full.items.begin()))
                << where;
            const Result hiccup = attempt(operation, k, 1);
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
                      const std::set<int> &allowed, bool commit_unreported) {
        ++operations_;
        rendering_ = Rendering::Whole;
        auto succeeded = [](const Result &r) {
            return r.status.rc == CMPI_RC_OK && r.return_text == "Success";
        };
        const std::string pristine = reload_and_dump();
        const Result full = attempt(operation, 0);
        ASSERT_FALSE(full.reached()) << label;
        ASSERT_TRUE(succeeded(full))
            << label << ": " << describe(full.status) << " " << full.return_text;
        const std::string changed = fabric_dump();
        ASSERT_TRUE(changed != pristine) << label << " changes nothing";
        for (long fail_count : {0L, 1L}) {
            for (long k = 1; k <= kMaxCalls; ++k) {
                reload_and_dump();
                const Result failed = attempt(operation, k, fail_count);
                const std::string state = fabric_dump();
                if (!failed.reached()) {
                    EXPECT_EQ(failed.items, full.items) << label;
                    EXPECT_TRUE(state == changed) << label << ": the full run's change is missing";
                    break;
                }
                const std::string where = label + ", failing " +
                                          (fail_count == 1 ? "call " : "from call ") +
                                          std::to_string(k) + "\n" + failed.faults +
                                          describe(failed.status) + " " + failed.return_text + "\n";
                EXPECT_TRUE(allowed.count(failed.status.rc)) << where;
                EXPECT_FALSE(failed.return_text.empty()) << where << "no answer text";
                EXPECT_GE(failed.done, 1) << where << "result never closed";
                EXPECT_TRUE(state == pristine || state == changed)
                    << where << "the switch was left half changed";
                EXPECT_TRUE(succeeded(failed) || state == pristine)
                    << where << "a failure, but the change was made";
                EXPECT_TRUE(!succeeded(failed) || commit_unreported || state == changed)
                    << where << "answered success, changed nothing";
                if (HasFailure()) return;
                if (k == kMaxCalls) ADD_FAILURE() << label << " still reaches call " << k;
            }
        }
    }

    std::string reload_and_dump() {
        load_fabric(kExampleFabric);
        return fabric_dump();
    }

    Rendering rendering_ = Rendering::Whole;
    long faulted_requests_ = 0;
    static inline long operations_ = 0;
    static inline long requests_ = 0;
};

TEST_F(FaultSweepTest, ReadsDeliverAPrefixOfTheirAnswer) {
    for (const std::string &cls : kInstanceClasses) {
        sweep_read("enumInstanceNames " + cls,
                   [&](cmpihost::Request &request) {
                       return provider().enumInstanceNames(request, class_path(request, cls));
                   },
                   {CMPI_RC_OK});
        sweep_read("enumInstances " + cls,
                   [&](cmpihost::Request &request) {
                       return provider().enumInstances(request, class_path(request, cls), nullptr);
                   },
                   {CMPI_RC_OK});

        // getInstance of every object (of the class itself when there is
        // none). The zoning objects report a lookup or build failure as not
        // found, the zone service as failed, the other handlers leave the
        // status as it was. A device alias whose name lookup fails is still
        // delivered, built with an empty name as for a pWWN that has no
        // alias (the lookup's code is only traced): only which object comes
        // back is compared.
        std::set<int> statuses{CMPI_RC_OK};
        if (cls == "VORNA_ZoneSet" || cls == "VORNA_Zone" || cls == "VORNA_ZoneAlias" ||
            cls == "VORNA_ZoneMemberSettingData")
            statuses.insert(CMPI_RC_ERR_NOT_FOUND);
        if (cls == "VORNA_ZoneService") statuses.insert(CMPI_RC_ERR_FAILED);
        cmpihost::Request listing;
        std::vector<const CMPIObjectPath *> targets = paths_of(listing, cls);
        if (targets.empty()) targets.push_back(class_path(listing, cls));
        for (const CMPIObjectPath *target : targets) {
            sweep_read(
                "getInstance " + canonical(target),
                [&](cmpihost::Request &request) {
                    return provider().getInstance(request, target, nullptr);
                },
                statuses, cls == "VORNA_DeviceAlias" ? Rendering::Identity : Rendering::Whole,
                statuses.size() > 1);
        }
        if (HasFatalFailure()) return;
    }
}

TEST_F(FaultSweepTest, AssociationsDeliverAPrefixOfTheirAnswer) {
    const std::set<int> statuses{CMPI_RC_OK, CMPI_RC_ERR_INVALID_PARAMETER};
    for (const char *cls : {"VORNA_ZoneService", "VORNA_ZoneSet", "VORNA_Zone", "VORNA_ZoneAlias",
                            "VORNA_ZoneMemberSettingData", "VORNA_DeviceAlias"}) {
        cmpihost::Request listing;
        for (const CMPIObjectPath *source : paths_of(listing, cls)) {
            const std::string text = canonical(source);
            const std::pair<std::string, Operation> operations[] = {
                {"associatorNames ",
                 [&](cmpihost::Request &r) {
                     return provider().associatorNames(r, source, nullptr, nullptr, nullptr,
                                                       nullptr);
                 }},
                {"associators ",
                 [&](cmpihost::Request &r) {
                     return provider().associators(r, source, nullptr, nullptr, nullptr, nullptr,
                                                   nullptr);
                 }},
                {"referenceNames ",
                 [&](cmpihost::Request &r) {
                     return provider().referenceNames(r, source, nullptr, nullptr);
                 }},
                {"references ",
                 [&](cmpihost::Request &r) {
                     return provider().references(r, source, nullptr, nullptr, nullptr);
                 }},
            };
            for (const auto &[name, operation] : operations)
                sweep_read(name + text, operation, statuses);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(FaultSweepTest, DeletesAndMethodsChangeAllOrNothing) {
    auto zone_set = [](const char *id) { return zoning_path("VORNA_ZoneSet", id); };
    auto zone = [](const char *id) { return zoning_path("VORNA_Zone", id); };
    auto alias = [](const char *id) { return zoning_path("VORNA_ZoneAlias", id); };
    auto member = [](const char *id) { return zoning_path("VORNA_ZoneMemberSettingData", id); };
    const std::string member_of = "VORNA_ZoneMemberOfCollection";
    const std::string setting = "VORNA_ElementSettingData";
    const std::pair<const char *, std::string> deletes[] = {
        {"a zone set", zone_set("20^2^0")},
        {"a zone", zone("10^4^0")},
        {"a zone alias", alias("20^6^0")},
        {"a zone member", member("20^32768^fc2/5^0")},
        {"a zone set's zone",
         link_path(member_of, "Collection", zone_set("10^1^0"), "Member", zone("10^3^0"))},
        {"a zone's alias",
         link_path(member_of, "Collection", zone("10^2^0"), "Member", alias("10^6^0"))},
        {"a zone's member", link_path(setting, "ManagedElement", zone("10^4^0"), "SettingData",
                                      member("10^4^10:17^0"))},
        {"an alias's member", link_path(setting, "ManagedElement", alias("20^6^0"), "SettingData",
                                        member("20^2^31:00:00:00:01:8c:22:30^0"))},
    };
    for (const auto &[label, path] : deletes) {
        sweep_change(
            std::string("deleteInstance of ") + label,
            [&](cmpihost::Request &request) {
                return provider().deleteInstance(request, parsed(path));
            },
            {CMPI_RC_OK, CMPI_RC_ERR_FAILED, CMPI_RC_ERR_INVALID_PARAMETER, CMPI_RC_ERROR}, false);
        if (HasFatalFailure()) return;
    }

    auto text = [](const char *name, const char *value) { return Arg{name, CMPI_string, value}; };
    auto number = [](const char *name, const char *value) { return Arg{name, CMPI_uint16, value}; };
    auto ref = [](const char *name, const std::string &path) { return Arg{name, CMPI_ref, path}; };
    struct Method {
        const char *name;
        int vsan;
        std::vector<Arg> args;
        // The outcome of a device-alias change is that of its staging call;
        // a failed commit after a staged change still answers success.
        bool commit_unreported = false;
    };
    const Method methods[] = {
        {"CreateZoneSet", 10, {text("ZoneSetName", "fault_cfg")}},
        {"CreateZone",
         10,
         {text("ZoneName", "z_fault"), number("ZoneType", "2"), number("ZoneSubType", "4")}},
        {"CreateZoneAlias", 10, {text("CollectionAlias", "fault_alias")}},
        {"CreateZoneMembershipSettingData",
         10,
         {number("ConnectivityMemberType", "2"), text("ConnectivityMemberID", "3100000000990001"),
          ref("SystemSpecificCollection", zone("10^4^0"))}},
        {"AddZone", 20, {ref("ZoneSet", zone_set("20^1^0")), ref("Zone", zone("20^5^0"))}},
        {"AddZoneAlias", 10, {ref("Zone", zone("10^3^0")), ref("ZoneAlias", alias("10^6^0"))}},
        {"AddZoneMembershipSettingData",
         10,
         {ref("SystemSpecificCollection", zone("10^2^0")),
          ref("ZoneMembershipSettingData", member("10^4^10:17^0"))}},
        {"ActivateZoneSet",
         20,
         {ref("ZoneSet", zone_set("20^2^0")), Arg{"Activate", CMPI_boolean, "true"}}},
        {"CreateDeviceAlias",
         10,
         {text("DeviceAliasName", "fault_hba0"), text("PWWN", "31:00:00:00:00:99:00:01")},
         true},
        {"RemoveDeviceAlias", 10, {text("DeviceAliasName", "db01_hba0")}, true},
    };
    for (const Method &method : methods) {
        sweep_change(
            method.name,
            [&](cmpihost::Request &request) {
                return provider().invokeMethod(request, parsed(zone_service_path(method.vsan)),
                                               method.name, method_args(request, method.args),
                                               request.newArgs());
            },
            {CMPI_RC_OK}, method.commit_unreported);
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace zonetest
