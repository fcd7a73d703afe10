// The loader and the operations, on the test provider library: what each
// operation delivers and in which order, the status it returns, which
// request owns what the provider makes, and every way a library can fail to
// load.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <tuple>
#include <type_traits>
#include <vector>

#include "host_test_support.h"

namespace {

using cmpihost::Delivery;
using cmpihost::Provider;
using cmpihost::Request;
using cmpihost::Status;
using host_test::mb;
using host_test::str;

std::unique_ptr<Provider> loadNamed(const std::string &name, std::string *error) {
    return Provider::load(host_test::testProviderPath(), name, error);
}

// A path of the test provider's class owned by `request`: the class path,
// or with the key Id when one is given.
CMPIObjectPath *thing(Request &request, const char *id = nullptr) {
    CMPIObjectPath *op = request.newObjectPath("root/cimv2", "HostTest_Thing");
    if (id != nullptr) cmpihost::addStringKey(op, "Id", id);
    return op;
}

std::string pathText(const std::string &id) {
    return "root/cimv2:HostTest_Thing.Id=\"" + id + "\"";
}
// An instance as the test provider makes it with the property list {"Count"}.
std::string instanceText(const std::string &id, int count) {
    return pathText(id) + " Id=\"" + id + "\",Count=" + std::to_string(count);
}

using Texts = std::vector<std::string>;

// An operation's outcome in order: its status, its returnDone calls, what
// it delivered, and each output argument as "out Name=text".
template <typename Op>
Texts run(Op op) {
    Request request;
    CMPIArgs *out = request.newArgs();
    Status status;
    if constexpr (std::is_invocable_v<Op, Request &>) {
        status = op(request);
    } else {
        status = op(request, out);
    }
    Texts got{cmpihost::describe(status), "done " + std::to_string(request.doneCount())};
    for (const Delivery &d : request.deliveries()) {
        if (d.kind == Delivery::Kind::ObjectPath) got.push_back(cmpihost::pathToString(d.path));
        if (d.kind == Delivery::Kind::Instance)
            got.push_back(cmpihost::instanceToString(d.instance));
        if (d.kind == Delivery::Kind::Data) got.push_back(str(d.data));
    }
    for (CMPICount i = 0; i < CMGetArgCount(out, nullptr); ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = CMGetArgAt(out, i, &name, nullptr);
        got.push_back("out " + cmpihost::text(name) + "=" + str(data));
    }
    return got;
}

const char *const kOk = "rc 0 (CMPI_RC_OK)";

class LoaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(host_test::testProviderPath().empty()) << "test provider path unknown";
        std::string error;
        provider_ = loadNamed("HostTest", &error);
        ASSERT_NE(provider_, nullptr) << error;
    }

    std::unique_ptr<Provider> provider_;
};

// The operations the provider tests don't reach (or reach without a property
// list, a message or output arguments); integration/ runs the rest on the
// real provider.
TEST_F(LoaderTest, OperationsDeliverInOrderAndReturnTheProvidersStatus) {
    const Provider &p = *provider_;
    const char *countOnly[] = {"Count", nullptr};
    EXPECT_EQ(run([&](Request &r) { return p.enumInstanceNames(r, thing(r)); }),
              (Texts{kOk, "done 1", pathText("a"), pathText("b"), pathText("c")}));
    // The property list reaches the provider, which filters with it.
    EXPECT_EQ(
        run([&](Request &r) { return p.enumInstances(r, thing(r), countOnly); }),
        (Texts{kOk, "done 1", instanceText("a", 1), instanceText("b", 2), instanceText("c", 3)}));
    EXPECT_EQ(run([&](Request &r) { return p.getInstance(r, thing(r, "missing"), nullptr); }),
              (Texts{"rc 6 (CMPI_RC_ERR_NOT_FOUND): no instance missing", "done 0"}));
    EXPECT_EQ(run([&](Request &r) {
                  return p.createInstance(r, thing(r), CMNewInstance(mb(), thing(r, "n"), nullptr));
              }),
              (Texts{kOk, "done 0", pathText("n")}));
    EXPECT_EQ(run([&](Request &r) {
                  return p.modifyInstance(r, thing(r, "a"),
                                          CMNewInstance(mb(), thing(r, "a"), nullptr), nullptr);
              }),
              (Texts{"rc 7 (CMPI_RC_ERR_NOT_SUPPORTED)", "done 0"}));
    EXPECT_EQ(run([&](Request &r) { return p.execQuery(r, thing(r), "select *", "WQL"); }),
              (Texts{"rc 7 (CMPI_RC_ERR_NOT_SUPPORTED)", "done 0"}));

    EXPECT_EQ(run([&](Request &r) {
                  return p.associators(r, thing(r, "a"), "HostTest_Link", nullptr, nullptr, nullptr,
                                       countOnly);
              }),
              (Texts{kOk, "done 1", instanceText("linked", 1)}));
    EXPECT_EQ(run([&](Request &r, CMPIArgs *out) {
                  CMPIArgs *in = r.newArgs();
                  cmpihost::addStringArg(in, "Text", "hello");
                  return p.invokeMethod(r, thing(r, "a"), "Echo", in, out);
              }),
              (Texts{kOk, "done 1", "hello", "out Result=hello"}));
    EXPECT_EQ(run([&](Request &r, CMPIArgs *out) {
                  return p.invokeMethod(r, thing(r, "a"), "Nope", r.newArgs(), out);
              }),
              (Texts{"rc 17 (CMPI_RC_ERR_METHOD_NOT_FOUND): unknown method", "done 0"}));
}

TEST_F(LoaderTest, CleanupReportsTheFirstRefusal) {
    EXPECT_EQ(cmpihost::describe(provider_->cleanupAll(false)), "rc 50 (CMPI_RC_DO_NOT_UNLOAD)");
    EXPECT_EQ(cmpihost::describe(provider_->cleanupAll(true)),
              "rc 51 (CMPI_RC_NEVER_UNLOAD): method side stays");
}

TEST_F(LoaderTest, WhatTheProviderMakesBelongsToTheRequestItServes) {
    const std::size_t before = cmpihost::liveObjectCount();
    {
        Request served;
        CMPIObjectPath *op = thing(served);
        Request current;  // current on this thread, but not the one served
        const std::size_t currentCount = current.objectCount();
        EXPECT_EQ(provider_->enumInstances(served, op, nullptr).rc, CMPI_RC_OK);
        EXPECT_EQ(current.objectCount(), currentCount);
        EXPECT_EQ(served.deliveries().size(), 3u);
        // And the request that was current is current again.
        CMNewString(mb(), "after", nullptr);
        EXPECT_EQ(current.objectCount(), currentCount + 1);
    }
    EXPECT_EQ(cmpihost::liveObjectCount(), before);
}

TEST(Loader, RefusesLibrariesThatCannotServe) {
    ASSERT_FALSE(host_test::testProviderPath().empty()) << "test provider path unknown";
    // A provider name, how the error starts and something it holds.
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"NoInstance", "NoInstance_Create_InstanceMI not found: ", "undefined symbol"},
        {"NullMI", "NullMI_Create_InstanceMI returned no MI", ""},
        {"BadStatus", "BadStatus_Create_InstanceMI failed: rc 1: not ready", ""},
        {"Future", "Future_Create_InstanceMI needs CMPI version 210", ""},
    };
    for (const auto &[name, reason, detail] : cases) {
        std::string error;
        EXPECT_EQ(loadNamed(name, &error), nullptr) << name;
        EXPECT_EQ(error.rfind(reason, 0), 0u) << error;
        EXPECT_NE(error.find(detail), std::string::npos) << error;
    }
    std::string error;
    EXPECT_EQ(Provider::load("/nonexistent/libnothing.so", "X", &error), nullptr);
    EXPECT_NE(error.find("libnothing.so"), std::string::npos) << error;
    EXPECT_EQ(Provider::load("/nonexistent/libnothing.so", "X", nullptr), nullptr);
}

}  // namespace
