// The zonecim command as a user runs it: the binary, the provider it loads
// and the simulated switch behind it. What a user relies on beyond the
// operations themselves (the other integration tests): wrong usage is
// refused with status 2 and a reason on standard error; standard output
// carries results alone, in wbemcli's forms (the provider's trace lines go
// nowhere, or to standard error with --trace); a failed operation says so as
// wbemcli does and exits 1; what zonecim prints can be fed back to it.
#include "zonecim_session.h"

namespace zonetest {
namespace {

class ZonecimTest : public ZonecimSession {};

TEST_F(ZonecimTest, WrongUsageExitsWithTwoAndSaysWhy) {
    const std::string service = kServiceClass + ".Name=\"1\"";
    // Errors of path and argument syntax are zonecim_args_test's; one of
    // each shows they end the same way.
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{}, "subcommand is required"},
        {{"frobnicate", kServiceClass}, "unknown verb 'frobnicate'"},
        {{"ein"}, "path is required"},
        {{"cm", service}, "method is required"},
        {{"ei", "-nl", kServiceClass}, "-nl"},
        {{"gi", "root/cimv2:VORNA_Zone.InstanceID=\"1^2^0"}, "unterminated quoted string"},
        {{"cm", service, "CreateZoneSet.Bogus=\"zs1\""}, "has no parameter Bogus"},
        {{"rin", "-ac", "VORNA_ZoneMemberOfCollection", service}, "with -arc, not -ac"},
        {{"ri", "-arr", "Member", service}, "takes no -arr"},
        {{"gi", "-pl", "Name", service, "ElementName"}, "property list once"},
        {{"fabric"}, "subcommand is required"},
        {{"fabric", "load"}, "file is required"},
        {{"fabric", "generate", "--vsans", "5000"}, "out of range"},
    };
    for (const auto &[args, reason] : cases) {
        SCOPED_TRACE(args.empty() ? "(none)" : args.front() + " " + args.back());
        const Outcome run = zonecim(args);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
    }

    const Outcome help = zonecim({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *verb : {"ein", "ei", "gi", "di", "ain", "ai", "rin", "ri", "cm", "fabric"})
        EXPECT_NE(help.out.find(std::string("  ") + verb + " "), std::string::npos) << verb;

    const Outcome unloadable =
        zonecim({"--provider", "/nonexistent/none.so", "ein", kServiceClass});
    EXPECT_EQ(unloadable.status, 1);
    EXPECT_NE(unloadable.err.find("can't load the provider"), std::string::npos) << unloadable.err;
    EXPECT_EQ(unloadable.out, "");
}

TEST_F(ZonecimTest, OutputCarriesResultsAloneAndFeedsBackIn) {
    // ein: paths alone, the provider's trace lines nowhere; --trace sends
    // them to standard error and leaves the results as they were.
    const Outcome names = zonecim({"ein", kServiceClass});
    ASSERT_EQ(names.status, 0) << names.err;
    EXPECT_EQ(names.err, "");
    const std::vector<std::string> paths = names.lines();
    ASSERT_FALSE(paths.empty());
    for (const std::string &path : paths) EXPECT_EQ(path.rfind(kServiceClass + ".", 0), 0u) << path;
    const Outcome traced = zonecim({"--trace", "ein", kServiceClass});
    EXPECT_EQ(traced.status, 0);
    EXPECT_EQ(traced.out, names.out);
    EXPECT_NE(traced.err.find("In EnumInstanceNames ZoneProvider"), std::string::npos)
        << traced.err;

    // ei: "path properties" lines for the same paths in the same order; a
    // property list leaves the other properties out.
    const std::vector<std::string> lines = instances(kServiceClass);
    ASSERT_EQ(lines.size(), paths.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].rfind(paths[i] + " ", 0), 0u) << lines[i];
        EXPECT_NE(lines[i].find("SessionState=4"), std::string::npos) << lines[i];
    }
    for (const std::string &line : ok_lines({"ei", "-pl", "SessionState", kServiceClass})) {
        EXPECT_NE(line.find("SessionState=4"), std::string::npos) << line;
        EXPECT_EQ(line.find("ElementName="), std::string::npos) << line;
    }

    // gi of a printed path, and by the key the provider reads written the
    // short way: that one object, shown under the path it was asked for.
    const std::string service = zone_service(10);
    const std::string short_form = kServiceClass + ".Name=\"10\"";
    for (const std::string &path : {service, kServiceClass + ".Name=10"}) {
        const std::vector<std::string> one = ok_lines({"gi", path});
        ASSERT_EQ(one.size(), 1u) << path;
        EXPECT_EQ(one[0].rfind((path == service ? service : short_form) + " ", 0), 0u) << one[0];
        EXPECT_NE(one[0].find(",Name=\"10\",ElementName="), std::string::npos) << one[0];
    }

    // A failed operation: nothing on standard output, wbemcli's report on
    // standard error, exit 1.
    const Outcome missing = zonecim({"gi", kServiceClass + ".Name=\"4000\""});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err,
              "*\n* zonecim: Cim: (1) CIM_ERR_FAILED: could not find or construct instance\n*\n");

    // Printed references go back in as arguments, in either order, and the
    // association filters reach the provider.
    const std::string zone_set =
        create(service, "CreateZoneSet.ZoneSetName=\"zonecim_zs\"", "ZoneSet");
    const std::string zone =
        create(service, "CreateZone.ZoneName=\"zonecim_z\",ZoneType=2,ZoneSubType=2", "Zone");
    const Outcome added = zonecim({"cm", service, "AddZone.Zone=" + zone + ",ZoneSet=" + zone_set});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, service + " AddZone: Success\n");
    EXPECT_EQ(
        ok_lines({"ain", "-ac", "VORNA_ZoneMemberOfCollection", "-arc", "VORNA_Zone", zone_set}),
        std::vector<std::string>{zone});
}

}  // namespace
}  // namespace zonetest
