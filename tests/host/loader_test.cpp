// The loader and the operations, on the test provider library: what each
// operation delivers and in which order, the status it returns, and every
// way a library can fail to load.
#include <gtest/gtest.h>

#include <cmpimacs.h>

#include <atomic>
#include <thread>
#include <vector>

#include "host_test_support.h"

namespace {

using cmpihost::Delivery;
using cmpihost::Provider;
using cmpihost::Request;
using cmpihost::Status;

const CMPIBroker *mb() {
    return cmpihost::broker();
}

std::unique_ptr<Provider> loadNamed(const std::string &name, std::string *error) {
    return Provider::load(host_test::testProviderPath(), name, error);
}

class LoaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(host_test::testProviderPath().empty()) << "test provider path unknown";
        std::string error;
        provider_ = loadNamed("HostTest", &error);
        ASSERT_NE(provider_, nullptr) << error;
    }

    // A class path of the test provider's class, owned by `request`.
    static CMPIObjectPath *classPath(Request &request) {
        return request.newObjectPath("root/cimv2", "HostTest_Thing");
    }
    static CMPIObjectPath *thing(Request &request, const std::string &id) {
        CMPIObjectPath *op = classPath(request);
        cmpihost::addStringKey(op, "Id", id);
        return op;
    }

    static std::vector<std::string> texts(const Request &request) {
        std::vector<std::string> out;
        for (const Delivery &d : request.deliveries()) {
            switch (d.kind) {
                case Delivery::Kind::ObjectPath:
                    out.push_back(cmpihost::pathToString(d.path));
                    break;
                case Delivery::Kind::Instance:
                    out.push_back(cmpihost::instanceToString(d.instance));
                    break;
                case Delivery::Kind::Data:
                    out.push_back(host_test::str(d.data));
                    break;
            }
        }
        return out;
    }

    std::unique_ptr<Provider> provider_;
};

TEST_F(LoaderTest, CreatesAllThreeMIsOfTheLibrary) {
    EXPECT_STREQ(provider_->instanceMI()->ft->miName, "instanceHostTest");
    EXPECT_STREQ(provider_->associationMI()->ft->miName, "associationHostTest");
    EXPECT_STREQ(provider_->methodMI()->ft->miName, "methodHostTest");
}

TEST_F(LoaderTest, InstanceOperationsDeliverInOrderAndCloseTheResult) {
    Request names;
    Status status = provider_->enumInstanceNames(names, classPath(names));
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_FALSE(status.message.has_value());
    EXPECT_EQ(texts(names), (std::vector<std::string>{
                                R"(root/cimv2:HostTest_Thing.Id="a")",
                                R"(root/cimv2:HostTest_Thing.Id="b")",
                                R"(root/cimv2:HostTest_Thing.Id="c")",
                            }));
    EXPECT_EQ(names.doneCount(), 1);

    Request all;
    EXPECT_EQ(provider_->enumInstances(all, classPath(all), nullptr).rc, CMPI_RC_OK);
    ASSERT_EQ(all.deliveries().size(), 3u);
    EXPECT_EQ(texts(all)[1],
              R"(root/cimv2:HostTest_Thing.Id="b" Id="b",Count=2,Label="label \"quoted\"")");

    // The property list reaches the provider, which filters with it.
    Request some;
    const char *props[] = {"Count", nullptr};
    EXPECT_EQ(provider_->enumInstances(some, classPath(some), props).rc, CMPI_RC_OK);
    EXPECT_EQ(texts(some)[2], R"(root/cimv2:HostTest_Thing.Id="c" Id="c",Count=3)");

    Request one;
    EXPECT_EQ(provider_->getInstance(one, thing(one, "b"), nullptr).rc, CMPI_RC_OK);
    ASSERT_EQ(one.deliveries().size(), 1u);
    EXPECT_EQ(one.deliveries()[0].kind, Delivery::Kind::Instance);

    Request gone;
    EXPECT_EQ(provider_->deleteInstance(gone, thing(gone, "b")).rc, CMPI_RC_OK);
    ASSERT_EQ(gone.deliveries().size(), 1u);
    EXPECT_EQ(gone.deliveries()[0].data.type, CMPI_chars);
    EXPECT_STREQ(gone.deliveries()[0].data.value.chars, "deleted");
    EXPECT_EQ(gone.deliveries()[0].doneBefore, 0);
    EXPECT_EQ(gone.doneCount(), 1);

    Request created;
    CMPIInstance *ci = CMNewInstance(mb(), thing(created, "new"), nullptr);
    EXPECT_EQ(provider_->createInstance(created, classPath(created), ci).rc, CMPI_RC_OK);
    EXPECT_EQ(texts(created), std::vector<std::string>{R"(root/cimv2:HostTest_Thing.Id="new")"});
    EXPECT_EQ(created.doneCount(), 0);
}

TEST_F(LoaderTest, StatusCarriesTheProvidersCodeAndMessage) {
    Request missing;
    Status status = provider_->getInstance(missing, thing(missing, "missing"), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(status.message, std::optional<std::string>("no instance missing"));
    EXPECT_TRUE(missing.deliveries().empty());
    EXPECT_EQ(missing.doneCount(), 0);

    Request keyless;
    status = provider_->getInstance(keyless, classPath(keyless), nullptr);
    EXPECT_EQ(cmpihost::describe(status), "rc 4 (CMPI_RC_ERR_INVALID_PARAMETER): no Id key");

    Request modify;
    CMPIInstance *ci = CMNewInstance(mb(), thing(modify, "a"), nullptr);
    status = provider_->modifyInstance(modify, thing(modify, "a"), ci, nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_FALSE(status.message.has_value());
    Request query;
    EXPECT_EQ(provider_->execQuery(query, classPath(query), "select *", "WQL").rc,
              CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(LoaderTest, AssociationOperationsDeliverNeighboursAndLinks) {
    Request names;
    EXPECT_EQ(
        provider_->associatorNames(names, thing(names, "a"), nullptr, nullptr, nullptr, nullptr).rc,
        CMPI_RC_OK);
    EXPECT_EQ(texts(names), std::vector<std::string>{R"(root/cimv2:HostTest_Thing.Id="linked")"});

    Request instances;
    const char *props[] = {"Count", nullptr};
    EXPECT_EQ(provider_
                  ->associators(instances, thing(instances, "a"), "HostTest_Link", nullptr, nullptr,
                                nullptr, props)
                  .rc,
              CMPI_RC_OK);
    EXPECT_EQ(
        texts(instances),
        std::vector<std::string>{R"(root/cimv2:HostTest_Thing.Id="linked" Id="linked",Count=1)"});

    const std::string link =
        R"(root/cimv2:HostTest_Link.Left="root/cimv2:HostTest_Thing.Id=\"a\"",)"
        R"(Right="root/cimv2:HostTest_Thing.Id=\"linked\"")";
    Request refNames;
    EXPECT_EQ(provider_->referenceNames(refNames, thing(refNames, "a"), nullptr, nullptr).rc,
              CMPI_RC_OK);
    EXPECT_EQ(texts(refNames), std::vector<std::string>{link});
    Request refs;
    EXPECT_EQ(provider_->references(refs, thing(refs, "a"), nullptr, "Left", nullptr).rc,
              CMPI_RC_OK);
    ASSERT_EQ(refs.deliveries().size(), 1u);
    EXPECT_EQ(cmpihost::pathToString(CMGetObjectPath(refs.deliveries()[0].instance, nullptr)),
              link);
    EXPECT_EQ(refs.doneCount(), 1);
}

TEST_F(LoaderTest, MethodsReadArgumentsAndFillTheOutputs) {
    Request echo;
    CMPIArgs *in = echo.newArgs();
    CMPIArgs *out = echo.newArgs();
    cmpihost::addStringArg(in, "Text", "hello");
    Status status = provider_->invokeMethod(echo, thing(echo, "a"), "Echo", in, out);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(host_test::str(CMGetArg(out, "Result", nullptr)), "hello");
    ASSERT_EQ(echo.deliveries().size(), 1u);
    EXPECT_STREQ(echo.deliveries()[0].data.value.chars, "hello");

    Request count;
    in = count.newArgs();
    out = count.newArgs();
    cmpihost::addStringArg(in, "ZoneName", "z");
    cmpihost::addReferenceArg(in, "Zone", thing(count, "a"));
    EXPECT_EQ(provider_->invokeMethod(count, thing(count, "a"), "Count", in, out).rc, CMPI_RC_OK);
    ASSERT_EQ(count.deliveries().size(), 1u);
    EXPECT_EQ(count.deliveries()[0].data.type, CMPI_uint32);
    EXPECT_EQ(count.deliveries()[0].data.value.uint32, 2u);
    EXPECT_EQ(host_test::str(CMGetArg(out, "First", nullptr)), "ZoneName");

    Request unknown;
    status = provider_->invokeMethod(unknown, thing(unknown, "a"), "Nope", unknown.newArgs(),
                                     unknown.newArgs());
    EXPECT_EQ(status.rc, CMPI_RC_ERR_METHOD_NOT_FOUND);
    EXPECT_EQ(status.message, std::optional<std::string>("unknown method"));
}

TEST_F(LoaderTest, CleanupReportsTheFirstRefusal) {
    Status status = provider_->cleanupAll(false);
    EXPECT_EQ(status.rc, CMPI_RC_DO_NOT_UNLOAD);
    EXPECT_FALSE(status.message.has_value());
    status = provider_->cleanupAll(true);
    EXPECT_EQ(status.rc, CMPI_RC_NEVER_UNLOAD);
    EXPECT_EQ(status.message, std::optional<std::string>("method side stays"));
}

TEST_F(LoaderTest, WhatTheProviderMakesBelongsToTheRequestItServes) {
    const std::size_t before = cmpihost::liveObjectCount();
    {
        Request served;
        CMPIObjectPath *op = classPath(served);
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

TEST_F(LoaderTest, SeveralThreadsRunOperationsAtOnce) {
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([this, &failures] {
            for (int i = 0; i < 50; ++i) {
                Request request;
                Status status = provider_->enumInstances(request, classPath(request), nullptr);
                if (status.rc != CMPI_RC_OK || request.deliveries().size() != 3 ||
                    texts(request)[0] !=
                        R"(root/cimv2:HostTest_Thing.Id="a" Id="a",Count=1,Label="label \"quoted\"")") {
                    ++failures;
                }
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
}

TEST(Loader, RefusesLibrariesThatCannotServe) {
    ASSERT_FALSE(host_test::testProviderPath().empty()) << "test provider path unknown";
    struct Case {
        const char *name;
        const char *reason;
    };
    const Case cases[] = {
        {"NoInstance", "NoInstance_Create_InstanceMI not found: "},
        {"NullMI", "NullMI_Create_InstanceMI returned no MI"},
        {"BadStatus", "BadStatus_Create_InstanceMI failed: rc 1: not ready"},
        {"Future", "Future_Create_InstanceMI needs CMPI version 210"},
    };
    for (const Case &c : cases) {
        std::string error;
        EXPECT_EQ(loadNamed(c.name, &error), nullptr) << c.name;
        EXPECT_EQ(error.rfind(c.reason, 0), 0u) << error;
    }
    std::string error;
    EXPECT_EQ(loadNamed("NoInstance", &error), nullptr);
    EXPECT_NE(error.find("undefined symbol"), std::string::npos) << error;
    EXPECT_EQ(Provider::load("/nonexistent/libnothing.so", "X", &error), nullptr);
    EXPECT_NE(error.find("libnothing.so"), std::string::npos) << error;
    EXPECT_EQ(Provider::load("/nonexistent/libnothing.so", "X", nullptr), nullptr);
}

}  // namespace
