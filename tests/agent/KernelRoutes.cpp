#include "tests/agent/KernelRoutes.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "tests/agent/LiveProgram.h"

namespace TestSupport {

namespace {

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> result;
    for (std::string word; in >> word;) {
        result.push_back(word);
    }
    return result;
}

template <typename Visit>
void forEachLine(const std::string& text, Visit visit) {
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        visit(words(line));
    }
}

std::set<std::string> runningLinks(const std::string& ip) {
    std::set<std::string> links;
    forEachLine(outputOf(ip + "-o link"), [&](const std::vector<std::string>& line) {
        const std::string name = line.at(1).substr(0, line[1].find_first_of("@:"));
        const std::string flags = "," + line.at(2).substr(1, line[2].size() - 2) + ",";
        if (flags.find(",UP,") != std::string::npos
            && flags.find(",NO-CARRIER,") == std::string::npos) {
            links.insert(name);
        }
    });
    return links;
}

std::string after(const std::vector<std::string>& line, const std::string& key) {
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        if (line[i] == key) {
            return line[i + 1];
        }
    }
    return {};
}

} // namespace

RoutesByPrefix kernelRoutes(const std::string& netns) {
    const std::string ip = "ip " + (netns.empty() ? "" : "-n " + netns + " ");
    const std::set<std::string> links = runningLinks(ip);
    RoutesByPrefix routes;
    for (const std::string family : {"-4 ", "-6 "}) {
        for (const std::string table : {"main", "local"}) {
            const std::string text = outputOf(ip + family + "route show table " + table);
            forEachLine(text, [&](const std::vector<std::string>& line) {
                const bool typed = line[0] == "local" || line[0] == "broadcast";
                std::string prefix = line.at(typed ? 1 : 0);
                const bool isHost = prefix.find('/') == std::string::npos;
                const bool farEnd = !typed && isHost && family == "-4 ";
                const std::string link = after(line, "dev");
                if (line[0] == "anycast" || line[0] == "multicast" || farEnd
                    || prefix.rfind("fe80:", 0) == 0 || !links.contains(link)) {
                    return;
                }
                prefix += isHost ? (family == "-4 " ? "/32" : "/128") : "";
                routes[prefix].insert(link);
            });
        }
    }
    return routes;
}

RoutesByPrefix agentRoutes(const std::string& state, const std::string& vrf) {
    const auto document = nlohmann::json::parse(state, nullptr, false);
    RoutesByPrefix routes;
    if (!document.is_object() || !document["vrfs"].contains(vrf)) {
        return routes;
    }
    for (const char* family : {"ipv4", "ipv6"}) {
        for (const auto& item : document["vrfs"][vrf][family].items()) {
            if (item.value()["type"] != 3 && !item.value().contains("sourceVrf")) {
                routes[item.key()].insert(item.value()["intf"].is_string()
                                              ? item.value()["intf"].get<std::string>()
                                              : "none");
            }
        }
    }
    return routes;
}

std::string toText(const RoutesByPrefix& routes) {
    std::string text;
    for (const auto& [prefix, links] : routes) {
        text += prefix;
        for (const std::string& link : links) {
            text += ' ' + link;
        }
        text += '\n';
    }
    return text;
}

} // namespace TestSupport
