#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "agent/document/ScenarioLine.h"
#include "agent/patch/DocumentError.h"

namespace Agent {
namespace {

/// "POINTER: what is wrong" of a scenario line; empty for one that is fine.
std::string complaint(const std::string& line) {
    try {
        readScenarioLine(line);
    } catch (const DocumentError& error) {
        return error.pointer() + ": " + error.what();
    }
    return {};
}

std::string setLine(const std::string& patch) { return R"({"set":)" + patch + "}"; }

TEST(Document, WhatTheSchemaDoesNotAllowIsRefusedWhereItStands) {
    const std::string longVrf(101, 'v');
    const std::string longNetns(151, 'n');
    const std::pair<std::string, std::string> badLines[]{
        {"17", ": must be an object"},
        {"{}", ": neither set nor show"},
        {R"({"set":{},"show":"x"})", ": set and show in one line"},
        {R"({"at":"1","set":{}})", "/at: must be a number of seconds from 0 to 1000000000"},
        {R"({"at":1e10,"set":{}})", "/at: must be a number of seconds from 0 to 1000000000"},
        {R"({"show":7})", "/show: must be a string"},
        {R"({"sett":{}})", "/sett: unknown key"},
        {setLine("null"), "/set: must be an object"},
        {setLine(R"({"ipv5":{}})"), "/set/ipv5: unknown key"},
        {setLine(R"({"gracefulRestart":1})"), "/set/gracefulRestart: must be true or false"},
        {setLine(R"({"vrfs":{"":{}}})"), "/set/vrfs/: must not be the empty name"},
        {setLine(R"({"vrfs":{"a\u0000b":{}}})"),
         std::string("/set/vrfs/a\0b: must not hold a zero byte", 40)},
        {setLine(R"({"vrfs":{"a/b~c":true}})"), "/set/vrfs/a~1b~0c: must be an object"},
        {setLine(R"({"vrfs":{")" + longVrf + R"(":{}}})"),
         "/set/vrfs/" + longVrf + ": VrfName::bytes > VrfName::maxLength not allowed"},
        {setLine(R"({"vrfs":{"red":{"id":-1}}})"),
         "/set/vrfs/red/id: must be a whole number from 0 to 4294967295"},
        {setLine(R"({"vrfs":{"red":{"id":1.0}}})"),
         "/set/vrfs/red/id: must be a whole number from 0 to 4294967295"},
        {setLine(R"({"vrfs":{"red":{"id":4294967296}}})"),
         "/set/vrfs/red/id: must be a whole number from 0 to 4294967295"},
        {setLine(R"({"vrfs":{"red":{"id":16777215}}})"),
         "/set/vrfs/red/id: must not be 16777215, which is no VRF's id"},
        {setLine(R"({"vrfs":{"red":{"status":{"netns":")" + longNetns + R"("}}}})"),
         "/set/vrfs/red/status/netns: NamespaceName::bytes > 150 not allowed"},
        {setLine(R"({"kernel":{"default":{"e":{"device":1}}}})"),
         "/set/kernel/default/e/device: must be a string"},
        {setLine(R"({"ipv4":{"default":{"e":{"address":"10.1.1.5"}}}})"),
         "/set/ipv4/default/e/address: not an address with length: \"10.1.1.5\""},
        {setLine(R"({"ipv4":{"default":{"e":{"address":"2001:db8::1/64"}}}})"),
         "/set/ipv4/default/e/address: not an IPv4 address: \"2001:db8::1\""},
        {setLine(R"({"ipv4":{"default":{"e":{"secondary":{"10.1.1.5/33":true}}}}})"),
         "/set/ipv4/default/e/secondary/10.1.1.5~133: AddrWithMask::len > 32 not allowed"},
        {setLine(R"({"ipv4":{"default":{"e":{"unnumbered":""}}}})"),
         "/set/ipv4/default/e/unnumbered: must not be the empty name"},
        {setLine(R"({"ipv6":{"default":{"e":{"10.1.1.5/24":true}}}})"),
         "/set/ipv6/default/e/10.1.1.5~124: not an IPv6 address: \"10.1.1.5\""},
        {setLine(R"({"ipv6":{"default":{"e":{"2001:db8::1/64":true,"2001:DB8::1/64":null}}}})"),
         "/set/ipv6/default/e/2001:db8::1~164: is given twice, spelled in two ways"},
        {setLine(R"({"virtualIps":{"ipv6":{"default":{"2001:db8::9/64":{}}}}})"),
         "/set/virtualIps/ipv6/default/2001:db8::9~164: not an IPv6 address: "
         "\"2001:db8::9/64\""},
        {setLine(R"({"leaks":{"ipv4":{"default":{"10.1.1.5/24":{}}}}})"),
         "/set/leaks/ipv4/default/10.1.1.5~124: Prefix::validAsPrefix != true not allowed"},
        {setLine(R"({"leaks":{"ipv4":{"default":{"10.1.1.0/24":{"red":1}}}}})"),
         "/set/leaks/ipv4/default/10.1.1.0~124/red: must be true or false"},
        {setLine(R"({"ribWaits":{"default":"yes"}})"),
         "/set/ribWaits/default: must be true or false"},
        // Hardly JSON.
        {R"({"set":{"vrfs":{"red":)", "/set/vrfs/red: invalid JSON at byte 23"},
        {R"({"set":{}} x)", ": invalid JSON at byte 12"},
        {R"({"set":{},"set":{}})", "/set: is given twice"},
        {R"({"at":1e999,"set":{}})", "/at: number out of range at byte 11"},
        {std::string("{\"set\":{\"\xff\":1}}"), "/set: invalid JSON at byte 10"},
        {std::string("{\"set\":\0{}}", 11), "/set: invalid JSON at byte 8"},
        {R"({"set":{"vrfs":{"red":{"id":18446744073709551616}}}})",
         "/set/vrfs/red/id: must be a whole number from 0 to 4294967295"},
    };
    for (const auto& [line, expected] : badLines) {
        EXPECT_EQ(complaint(line), expected) << line;
    }
    EXPECT_NE(complaint(std::string(1000000, '[')).find("is nested too deeply"), std::string::npos);
}

} // namespace
} // namespace Agent
