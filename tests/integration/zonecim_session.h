// Driving the simulated switch the way an operator does: every operation is
// one run of the zonecim command, and what a test learns it reads back from
// what the command prints (paths, method return texts, output references,
// the fabric dump).
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "switch_fixture.h"

namespace zonetest {

// One line of cm output: "<target> <Method>: <text>[, <Out> (reference): <path>]".
struct MethodAnswer {
    std::string target;
    std::string text;
    std::string output;     // name of the output reference, empty when none
    std::string reference;  // the output reference's path
};

inline MethodAnswer parse_method_answer(const std::string &method, std::string line) {
    MethodAnswer answer;
    if (!line.empty() && line.back() == '\n') line.pop_back();
    const std::string marker = " " + method + ": ";
    const std::size_t at = line.find(marker);
    if (at == std::string::npos) {
        answer.text = "<no answer of " + method + " in: " + line + ">";
        return answer;
    }
    answer.target = line.substr(0, at);
    answer.text = line.substr(at + marker.size());
    static const std::string kReference = " (reference): ";
    const std::size_t ref_at = answer.text.find(kReference);
    if (ref_at == std::string::npos) return answer;
    answer.reference = answer.text.substr(ref_at + kReference.size());
    const std::string head = answer.text.substr(0, ref_at);
    const std::size_t comma = head.rfind(", ");
    answer.text = head.substr(0, comma);
    answer.output = comma == std::string::npos ? "" : head.substr(comma + 2);
    return answer;
}

// The InstanceID of a printed path (the text between its quotes).
inline std::string instance_id_of(const std::string &path) {
    const std::string key = "InstanceID=\"";
    const std::size_t at = path.find(key);
    if (at == std::string::npos) return "";
    const std::size_t end = path.find('"', at + key.size());
    return path.substr(at + key.size(), end - at - key.size());
}

// The path of the active copy of an editable object: the same object number
// with the active flag 1.
inline std::string active_copy(const std::string &path) {
    const std::size_t at = path.rfind("^0\"");
    if (at == std::string::npos) return "<not an editable path: " + path + ">";
    return std::string(path).replace(at, 3, "^1\"");
}

inline bool listed(const std::vector<std::string> &lines, const std::string &line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

// Lines that mention the text anywhere (an association path naming an object).
inline std::vector<std::string> mentioning(const std::vector<std::string> &lines,
                                           const std::string &text) {
    std::vector<std::string> found;
    for (const std::string &line : lines)
        if (line.find(text) != std::string::npos) found.push_back(line);
    return found;
}

// Paths of the zoning objects of one VSAN (by the InstanceID's first field).
inline std::vector<std::string> of_vsan(const std::vector<std::string> &paths, int vsan) {
    std::vector<std::string> found;
    const std::string prefix = std::to_string(vsan) + "^";
    for (const std::string &path : paths)
        if (instance_id_of(path).rfind(prefix, 0) == 0) found.push_back(path);
    return found;
}

inline std::vector<std::string> sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

class ZonecimSession : public SwitchTest {
  protected:
    static inline const std::string kZoneSet = "root/cimv2:VORNA_ZoneSet";
    static inline const std::string kZone = "root/cimv2:VORNA_Zone";
    static inline const std::string kZoneAlias = "root/cimv2:VORNA_ZoneAlias";
    static inline const std::string kMember = "root/cimv2:VORNA_ZoneMemberSettingData";
    static inline const std::string kMemberOf = "root/cimv2:VORNA_ZoneMemberOfCollection";
    static inline const std::string kSettingLink = "root/cimv2:VORNA_ElementSettingData";
    static inline const std::string kHostedLink = "root/cimv2:VORNA_ZoneHostedCollection";
    static inline const std::string kDeviceAlias = "root/cimv2:VORNA_DeviceAlias";
    static inline const std::string kServiceClass = "root/cimv2:VORNA_ZoneService";

    // The zone service of a VSAN, as enumerating the zone services prints it.
    std::string zone_service(int vsan) {
        const std::string tail = ",Name=\"" + std::to_string(vsan) + "\"";
        for (const std::string &path : names(kServiceClass))
            if (path.ends_with(tail)) return path;
        ADD_FAILURE() << "no zone service of VSAN " << vsan;
        return kServiceClass + ".Name=\"" + std::to_string(vsan) + "\"";
    }

    // A zonecim verb that must succeed; its lines.
    std::vector<std::string> ok_lines(const std::vector<std::string> &args) {
        const Outcome run = zonecim(args);
        EXPECT_EQ(run.status, 0) << args.front() << " " << args.back() << "\n" << run.err;
        return run.lines();
    }
    // enumerateInstanceNames: one path a line; enumerateInstances: one
    // "path properties" line per instance.
    std::vector<std::string> names(const std::string &cls) { return ok_lines({"ein", cls}); }
    std::vector<std::string> instances(const std::string &cls) { return ok_lines({"ei", cls}); }

    // associatorNames of a path, restricted to neighbours of one class.
    std::vector<std::string> neighbours(const std::string &path, const std::string &cls) {
        std::vector<std::string> found;
        for (const std::string &line : ok_lines({"ain", path}))
            if (line.rfind(cls + ".", 0) == 0) found.push_back(line);
        return sorted(found);
    }

    // The path of a zone set, zone or alias found by its name and database.
    std::string named(const std::string &cls, int vsan, const std::string &name, bool active) {
        const std::string flag = active ? "Active=TRUE" : "Active=FALSE";
        for (const std::string &line : instances(cls)) {
            const std::string path = line.substr(0, line.find(' '));
            if (!of_vsan({path}, vsan).empty() &&
                line.find("ElementName=\"" + name + "\"") != std::string::npos &&
                line.find(flag) != std::string::npos)
                return path;
        }
        ADD_FAILURE() << "no " << cls << " " << name << " (" << flag << ") in VSAN " << vsan;
        return cls + ".InstanceID=\"missing\"";
    }

    // invokeMethod; call is "Method.Arg=value,...". The provider answered
    // rc 0, one line, and its return text comes back.
    MethodAnswer invoke(const std::string &target, const std::string &call) {
        const std::string method = call.substr(0, call.find('.'));
        const Outcome run = zonecim({"cm", target, call});
        EXPECT_EQ(run.status, 0) << "cm " << call << "\n" << run.err;
        EXPECT_EQ(run.lines().size(), 1u) << run.out;
        const MethodAnswer answer = parse_method_answer(method, run.out);
        EXPECT_EQ(answer.target, target) << run.out;
        return answer;
    }

    // A method that must succeed; the path of the output reference named
    // output (empty: a method without output).
    std::string create(const std::string &target, const std::string &call,
                       const std::string &output) {
        const MethodAnswer answer = invoke(target, call);
        EXPECT_EQ(answer.text, "Success") << call;
        EXPECT_EQ(answer.output, output) << call;
        return answer.reference;
    }
    void change(const std::string &target, const std::string &call) { create(target, call, ""); }

    // deleteInstance that must succeed: nothing on standard output.
    void remove(const std::string &path) {
        const Outcome run = zonecim({"di", path});
        EXPECT_EQ(run.status, 0) << "di " << path << "\n" << run.err;
        EXPECT_EQ(run.out, "") << path;
    }

    // A request zonecim turns away: a non-zero exit, nothing on standard
    // output, the reason on standard error, the switch as before.
    void refused(const std::vector<std::string> &args, const std::string &reason) {
        const std::string before = fabric_dump();
        const Outcome run = zonecim(args);
        EXPECT_NE(run.status, 0);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
        EXPECT_EQ(fabric_dump(), before);
    }
};

}  // namespace zonetest
