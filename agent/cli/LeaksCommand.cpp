#include <charconv>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <directnet/tables.hpp>

#include "agent/base/Errors.h"
#include "agent/base/TablesPath.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/tables/LeakTables.h"
#include "agent/tables/ShownTables.h"
#include "agent/tables/TableRows.h"

namespace Agent {

namespace {

using Routing::LeakedRoute;
using Vrf::VrfIdMap::VrfId;

struct LeaksOptions {
    std::string action;
    std::string source;
    std::string prefix;
    std::string destination;
    std::string folder;
    bool json = false;
};

/// The number that the text is; none for anything else, and for what is no VRF's id.
std::optional<VrfId> idFrom(const std::string& text) {
    VrfId::Number number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    const bool isId = result.ec == std::errc() && result.ptr == end && VrfId(number) != VrfId();
    return isId ? std::optional(VrfId(number)) : std::nullopt;
}

VrfId vrfId(const directnet::Tables& tables, const std::string& text) {
    if (const auto vrf = tables.vrf(text)) {
        return VrfId(vrf->id);
    }
    if (const auto id = idFrom(text)) {
        return *id;
    }
    throw FailureError("the tables have no VRF " + text);
}

/// What the arguments say, with the names of the VRFs that the folder's tables have.
LeakedRoute readLeak(const LeaksOptions& options, const std::string& folder) {
    const auto prefix = directnet::prefixFrom(options.prefix);
    if (!prefix) {
        throw BadInputError("directnet: no prefix, or one with host bits: " + options.prefix);
    }
    directnet::Tables tables(folder, DIRECTNET_TABLES_WAIT);
    try {
        tables.update();
    } catch (const directnet::TablesError& error) {
        report(error.what());
    }
    return {vrfId(tables, options.source), prefixOf(*prefix), vrfId(tables, options.destination)};
}

/// Throws FailureError unless the tables have the leak, or lack it.
void expectWritten(const std::string& folder, const LeakedRoute& leak) {
    directnet::Tables tables(folder);
    tables.update();
    bool found = false;
    tables.eachLeak(
        [&](const directnet_leak& one) {
            found |= VrfId(one.dest_vrf_id) == leak.destVrfId()
                     && prefixOf(one.prefix) == leak.genPrefix();
        },
        leak.sourceVrfId().value());
    if (!found) {
        throw FailureError("there is no space for the leak in " + folder);
    }
}

bool isThere(const LeakTables::Status& status, const LeakedRoute& leak) {
    const auto* leaks = status.leakedRouteBySourceVrf(leak.sourceVrfId());
    return leaks != nullptr && leaks->leaks(leak.genPrefix(), leak.destVrfId());
}

std::string textOf(const LeaksOptions& options) {
    return options.source + ' ' + options.prefix + ' ' + options.destination;
}

void add(const LeaksOptions& options, const std::string& folder) {
    const LeakedRoute leak = readLeak(options, folder);
    const LeakTables tables(folder, report);
    LeakTables::Status& status = tables.of(leak.genPrefix().af());
    if (isThere(status, leak)) {
        report("the leak " + textOf(options) + " is there already");
    }
    status.leakIs(leak);
    expectWritten(folder, leak);
}

void remove(const LeaksOptions& options, const std::string& folder) {
    const LeakedRoute leak = readLeak(options, folder);
    const LeakTables tables(folder, report);
    LeakTables::Status& status = tables.of(leak.genPrefix().af());
    if (!isThere(status, leak)) {
        throw FailureError("there is no leak " + textOf(options));
    }
    status.leakDel(leak);
}

void list(const LeaksOptions& options, const std::string& folder) {
    directnet::Tables tables(folder);
    tables.update();
    showTables(std::cout, tables, "leaks", "", {options.json, Colour(useColour())});
}

void clear(const std::string& folder) {
    const LeakTables tables(folder, report);
    tables.of(Lanx::AddressFamily::ipv4).leakedRouteBySourceVrfDelAll();
    tables.of(Lanx::AddressFamily::ipv6).leakedRouteBySourceVrfDelAll();
}

void checkArguments(const LeaksOptions& options) {
    const bool namesLeak = options.action == "add" || options.action == "del";
    if (namesLeak == options.destination.empty() || (!namesLeak && !options.source.empty())) {
        throw BadInputError("directnet: leaks " + options.action
                            + (namesLeak ? " needs SOURCE PREFIX DEST" : " takes nothing more")
                            + "; see --help");
    }
    if (options.json && options.action != "list") {
        throw BadInputError("directnet: --json goes with leaks list");
    }
}

void editLeaks(const LeaksOptions& options) {
    checkArguments(options);
    const std::string folder = tablesPathOr(options.folder);
    try {
        if (options.action == "add") {
            add(options, folder);
        } else if (options.action == "del") {
            remove(options, folder);
        } else if (options.action == "clear") {
            clear(folder);
        } else {
            list(options, folder);
        }
    } catch (const Vaultdb::TableInUseError& error) {
        throw FailureError(std::string(error.what())
                           + "; an agent that is run with --leaks external leaves them to this "
                             "command");
    }
}

} // namespace

Command leaksCommand() {
    const auto options = std::make_shared<LeaksOptions>();
    const auto place = [](const char* name, const char* help, std::string& value) {
        return Argument{.name = name, .help = help, .value = &value, .complaint = complaintIfEmpty};
    };
    return {.name = "leaks",
            .description = "Edit the leaks between VRFs in the tables, for an agent that is run "
                           "with --leaks external, now or later.",
            .arguments = {{.name = "ACTION",
                           .help = "add or del a leak, list them, or clear: remove all",
                           .value = &options->action,
                           .isRequired = true,
                           .choices = {"add", "del", "list", "clear"}},
                          place("SOURCE", "The VRF whose prefix is leaked, by name or id",
                                options->source),
                          place("PREFIX", "The prefix, IPv4 or IPv6", options->prefix),
                          place("DEST", "The VRF that it is leaked to", options->destination),
                          {.name = "--json",
                           .help = "List as JSON, one object a line",
                           .value = &options->json},
                          tablesOption(options->folder)},
            .run = [options] { editLeaks(*options); }};
}

} // namespace Agent
