// A simulated switch for integration tests: a private database loaded from a
// fabric file with the zonecim command, and the provider library opened
// through the host as a CIM object manager opens it; plus runs of zonecim
// (or any other program) on that database and small builders of requests.
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
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/cmpihost.h"
#include "host/quiet_stdout.h"

namespace zonetest {

inline const char *kNamespace = "root/cimv2";
inline const std::string kExampleFabric = std::string(ZONE_SOURCE_DIR) + "/examples/fabric.json";

// Every class the provider enumerates instances of; the hosted collections
// are served but never hold an instance.
inline const std::vector<std::string> kInstanceClasses = {"VORNA_ZoneService",
                                                          "VORNA_HostedService",
                                                          "VORNA_ZoneSet",
                                                          "VORNA_Zone",
                                                          "VORNA_ZoneAlias",
                                                          "VORNA_ZoneMemberSettingData",
                                                          "VORNA_DeviceAlias",
                                                          "VORNA_ZoneMemberOfCollection",
                                                          "VORNA_ElementSettingData",
                                                          "VORNA_ZoneHostedCollection",
                                                          "VORNA_HostedCollection"};

// Provider calls run with standard output pointed at /dev/null: tests keep
// it for their own report.
using cmpihost::QuietStdout;

// A provider call run with its trace lines silenced; what it returns is
// checked afterwards, where a failure's message can still be seen.
template <typename Call>
auto quietly(Call call) {
    QuietStdout quiet;
    return call();
}

// What one program run left behind.
struct Outcome {
    int status = -1;  // exit status; -1 when the program didn't exit normally
    std::string out;
    std::string err;

    std::vector<std::string> lines() const {
        std::vector<std::string> found;
        std::istringstream in(out);
        for (std::string line; std::getline(in, line);) found.push_back(line);
        return found;
    }
};

inline std::string shell_quoted(const std::string &arg) {
    std::string quoted = "'";
    for (const char c : arg) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs a program (looked up on PATH) with the arguments in this process's
// environment, so on the switch database of the test program (ZONE_SIM_DB,
// set by the fixture), keeping standard error apart.
inline Outcome run_program(const std::string &program, const std::vector<std::string> &args) {
    Outcome run;
    char err_name[] = "/tmp/zonetest-err.XXXXXX";
    const int err_fd = mkstemp(err_name);
    if (err_fd < 0) {
        ADD_FAILURE() << "can't make a file for standard error";
        return run;
    }
    close(err_fd);
    std::string command = shell_quoted(program);
    for (const std::string &arg : args) command += " " + shell_quoted(arg);
    command += std::string(" 2>") + err_name;
    if (FILE *pipe = popen(command.c_str(), "r"); pipe != nullptr) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            run.out.append(buffer, n);
        const int status = pclose(pipe);
        run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    } else {
        ADD_FAILURE() << "can't run " << command;
    }
    std::ostringstream err_text;
    err_text << std::ifstream(err_name).rdbuf();
    run.err = err_text.str();
    unlink(err_name);
    // In a sanitizer build a report of the program's own process must fail
    // the test even where a failed exit status is what the test expects.
    for (const char *report : {"Sanitizer", "runtime error:"})
        EXPECT_EQ(run.err.find(report), std::string::npos) << command << "\n" << run.err;
    return run;
}

inline Outcome zonecim(const std::vector<std::string> &args) {
    return run_program(ZONECIM_PATH, args);
}

// The whole switch database as the fabric dump prints it.
inline std::string fabric_dump() {
    const Outcome run = zonecim({"fabric", "dump"});
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
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

// A path of the current request from its text ("root/cimv2:Class.Key=...";
// references as quoted paths).
inline CMPIObjectPath *parsed(const std::string &text) {
    std::string error;
    const auto path = cmpihost::parsePath(text, &error);
    if (!path) ADD_FAILURE() << text << ": " << error;
    return path ? *path : nullptr;
}

// The text of a zoning object's path, and of an association's between two
// objects (references as quoted paths).
inline std::string zoning_path(const std::string &cls, const std::string &id) {
    return std::string(kNamespace) + ":" + cls + ".InstanceID=\"" + id + "\"";
}
inline std::string link_path(const std::string &cls, const std::string &role,
                             const std::string &parent, const std::string &other_role,
                             const std::string &child) {
    auto quoted = [](const std::string &path) {
        std::string out = "\"";
        for (const char c : path) out += c == '"' ? std::string("\\\"") : std::string(1, c);
        return out + "\"";
    };
    return std::string(kNamespace) + ":" + cls + "." + role + "=" + quoted(parent) + "," +
           other_role + "=" + quoted(child);
}

// One input argument of a method: a string, a uint16 ("2"), a boolean
// ("true"/"false") or a reference (the text of a path).
struct Arg {
    std::string name;
    CMPIType type;
    std::string text;
};

// The input arguments of a request, in the given order (the provider reads
// them by position).
inline CMPIArgs *method_args(cmpihost::Request &request, const std::vector<Arg> &args) {
    CMPIArgs *in = request.newArgs();
    for (const Arg &arg : args) {
        CMPIValue value{};
        if (arg.type == CMPI_string) {
            cmpihost::addStringArg(in, arg.name, arg.text);
        } else if (arg.type == CMPI_ref) {
            cmpihost::addReferenceArg(in, arg.name, parsed(arg.text));
        } else {
            if (arg.type == CMPI_boolean) value.boolean = arg.text == "true";
            if (arg.type == CMPI_uint16)
                value.uint16 = static_cast<CMPIUint16>(std::stoi(arg.text));
            cmpihost::addValueArg(in, arg.name, value, arg.type);
        }
    }
    return in;
}

// The zone service of a VSAN, by the one key the provider reads.
inline std::string zone_service_path(int vsan) {
    return std::string(kNamespace) + ":VORNA_ZoneService.Name=\"" + std::to_string(vsan) + "\"";
}

// A method of a VSAN's zone service in a request of its own: its status and
// the text it returned. *created receives the InstanceID of its output
// reference named output (empty when there is none).
inline std::pair<cmpihost::Status, std::string> call_zone_service(
    const cmpihost::Provider &provider, int vsan, const char *method, const std::vector<Arg> &args,
    const char *output = nullptr, std::string *created = nullptr) {
    cmpihost::Request request;
    CMPIArgs *out = request.newArgs();
    const cmpihost::Status status = provider.invokeMethod(request, parsed(zone_service_path(vsan)),
                                                          method, method_args(request, args), out);
    if (output != nullptr) {
        const CMPIData ref = out->ft->getArg(out, output, nullptr);
        *created = ref.type != CMPI_ref || ref.value.ref == nullptr
                       ? ""
                       : cmpihost::dataText(
                             ref.value.ref->ft->getKey(ref.value.ref, "InstanceID", nullptr));
    }
    return {status, cmpihost::returnedText(request)};
}

// The canonical text of a reference key (or property) of a path.
inline std::string reference_key(const CMPIObjectPath *path, const char *name) {
    const CMPIData value = path->ft->getKey(path, name, nullptr);
    return value.type == CMPI_ref ? canonical(value.value.ref)
                                  : "<missing " + std::string(name) + ">";
}

// Texts of what a request delivered: paths for object paths, the instance's
// own path for instances.
inline std::vector<std::string> delivered_paths(const cmpihost::Request &request) {
    std::vector<std::string> texts;
    for (const cmpihost::Delivery &d : request.deliveries()) {
        if (d.kind == cmpihost::Delivery::Kind::ObjectPath)
            texts.push_back(canonical(d.path));
        else if (d.kind == cmpihost::Delivery::Kind::Instance)
            texts.push_back(canonical(d.instance->ft->getObjectPath(d.instance, nullptr)));
    }
    return texts;
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
    void SetUp() override { load_fabric(kExampleFabric); }

    static void load_fabric(const std::string &file) {
        const Outcome run = zonecim({"fabric", "load", file});
        ASSERT_EQ(run.status, 0) << "fabric load " << file << "\n" << run.err;
    }

    const cmpihost::Provider &provider() const { return *provider_; }

    CMPIObjectPath *class_path(cmpihost::Request &request, const std::string &cls) {
        return request.newObjectPath(kNamespace, cls);
    }

    // The paths enumerateInstanceNames delivers for a class, owned by request.
    std::vector<const CMPIObjectPath *> paths_of(cmpihost::Request &request,
                                                 const std::string &cls) {
        CMPIObjectPath *path = class_path(request, cls);
        EXPECT_EQ(quietly([&] { return provider().enumInstanceNames(request, path); }).rc,
                  CMPI_RC_OK)
            << cls;
        std::vector<const CMPIObjectPath *> paths;
        for (const cmpihost::Delivery &d : request.deliveries()) paths.push_back(d.path);
        return paths;
    }

    std::vector<std::string> names_of(const std::string &cls) {
        cmpihost::Request request;
        paths_of(request, cls);
        return delivered_paths(request);
    }

    std::vector<std::string> instance_paths_of(const std::string &cls) {
        cmpihost::Request request;
        CMPIObjectPath *path = class_path(request, cls);
        EXPECT_EQ(quietly([&] { return provider().enumInstances(request, path, nullptr); }).rc,
                  CMPI_RC_OK)
            << cls;
        return delivered_paths(request);
    }

  private:
    static inline std::filesystem::path directory_;
    static inline std::unique_ptr<cmpihost::Provider> provider_;
};

}  // namespace zonetest
