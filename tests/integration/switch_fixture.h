// A simulated switch for integration tests: a private database loaded from a
// fabric file with the zonecim command, and the provider library opened
// through the host as a CIM object manager opens it.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "host/quiet_stdout.h"

namespace zonetest {

inline const char *kNamespace = "root/cimv2";

// Provider calls run with standard output pointed at /dev/null: tests keep
// it for their own report.
using cmpihost::QuietStdout;

// Runs the zonecim command with the given arguments; its exit status.
inline int run_zonecim(const std::vector<std::string> &args, std::string *out = nullptr) {
    std::string command = std::string(ZONECIM_PATH);
    for (const std::string &arg : args) command += " '" + arg + "'";
    command += " 2>/dev/null";
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return -1;
    char buffer[4096];
    std::string text;
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
    const int status = pclose(pipe);
    if (out != nullptr) *out = text;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A path as text that ignores the host, the letter case of class and key
// names, and the order of the keys; reference keys are written the same way.
inline std::string canonical(const CMPIObjectPath *path) {
    if (path == nullptr) return "<null>";
    auto lower = [](std::string s) {
        for (char &c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return s;
    };
    std::string ns = cmpihost::text(path->ft->getNameSpace(path, nullptr));
    std::string cls = lower(cmpihost::text(path->ft->getClassName(path, nullptr)));
    std::vector<std::string> keys;
    const CMPICount count = path->ft->getKeyCount(path, nullptr);
    for (CMPICount i = 0; i < count; ++i) {
        CMPIString *name = nullptr;
        const CMPIData value = path->ft->getKeyAt(path, i, &name, nullptr);
        std::string rendered = value.type == CMPI_ref ? "{" + canonical(value.value.ref) + "}"
                                                      : cmpihost::dataText(value);
        keys.push_back(lower(cmpihost::text(name)) + "=" + rendered);
    }
    std::sort(keys.begin(), keys.end());
    std::string out = lower(ns) + ":" + cls;
    for (const std::string &key : keys) out += "." + key;
    return out;
}

// The canonical text of a reference key (or property) of a path.
inline std::string reference_key(const CMPIObjectPath *path, const char *name) {
    const CMPIData value = path->ft->getKey(path, name, nullptr);
    return value.type == CMPI_ref ? canonical(value.value.ref)
                                  : "<missing " + std::string(name) + ">";
}

class SwitchTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        directory_ =
            std::filesystem::temp_directory_path() / ("zone-it-" + std::to_string(getpid()));
        std::filesystem::create_directories(directory_);
        setenv("ZONE_SIM_DB", (directory_ / "switch.db").c_str(), 1);
        std::string error;
        provider_ = cmpihost::Provider::load(ZONE_PROVIDER_PATH, "ZoneProvider", &error);
        ASSERT_NE(provider_, nullptr) << error;
    }
    static void TearDownTestSuite() {
        provider_.reset();
        std::filesystem::remove_all(directory_);
    }
    void SetUp() override { load_fabric(std::string(ZONE_SOURCE_DIR) + "/examples/fabric.json"); }

    static void load_fabric(const std::string &file) {
        ASSERT_EQ(run_zonecim({"fabric", "load", file}), 0) << "fabric load " << file;
    }

    const cmpihost::Provider &provider() const { return *provider_; }

    CMPIObjectPath *class_path(cmpihost::Request &request, const std::string &cls) {
        return request.newObjectPath(kNamespace, cls);
    }

    CMPIObjectPath *parse(const std::string &text) {
        std::string error;
        auto path = cmpihost::parsePath(text, &error);
        EXPECT_TRUE(path.has_value()) << text << ": " << error;
        return path ? *path : nullptr;
    }

    // Texts of what a request delivered: paths for object paths, the
    // instance's own path for instances.
    static std::vector<std::string> delivered_paths(const cmpihost::Request &request) {
        std::vector<std::string> texts;
        for (const cmpihost::Delivery &d : request.deliveries()) {
            if (d.kind == cmpihost::Delivery::Kind::ObjectPath) {
                texts.push_back(canonical(d.path));
            } else if (d.kind == cmpihost::Delivery::Kind::Instance) {
                CMPIObjectPath *path = d.instance->ft->getObjectPath(d.instance, nullptr);
                texts.push_back(canonical(path));
            }
        }
        return texts;
    }

    std::vector<std::string> names_of(const std::string &cls) {
        cmpihost::Request request;
        QuietStdout quiet;
        const cmpihost::Status status =
            provider().enumInstanceNames(request, class_path(request, cls));
        EXPECT_EQ(status.rc, CMPI_RC_OK) << cls;
        return delivered_paths(request);
    }

    std::vector<std::string> instance_paths_of(const std::string &cls) {
        cmpihost::Request request;
        QuietStdout quiet;
        const cmpihost::Status status =
            provider().enumInstances(request, class_path(request, cls), nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_OK) << cls;
        return delivered_paths(request);
    }

  private:
    static inline std::filesystem::path directory_;
    static inline std::unique_ptr<cmpihost::Provider> provider_;
};

}  // namespace zonetest
