#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>

#include "agent/patch/DevicePatch.h"

namespace Agent {
namespace {

std::string textOf(NoDefault) { return {}; }
std::string textOf(DerivedDefault absent) { return absent.text; }
std::string textOf(bool absent) { return absent ? "`true`" : "`false`"; }
std::string textOf(const char* absent) { return std::string("`") + absent + '`'; }

/// The type within all maps of T, and how the way there is written behind `path`: a letter for each
/// kind of key.
template <typename T>
struct Within {
    using Type = T;
    static std::string path(const std::string& path) { return path; }
};
template <typename Key, typename T>
struct Within<MapPatch<Key, T>> {
    using Type = typename Within<T>::Type;
    static std::string path(const std::string& path) {
        return Within<T>::path(path + '.' + letter(path));
    }
    static char letter(const std::string& path) {
        if constexpr (std::is_same_v<Key, L3::VrfName>) {
            return path.find(".X") == std::string::npos ? 'X' : 'Y';
        } else if constexpr (std::is_same_v<Key, Lanx::NamespaceName>) {
            return 'N';
        } else if constexpr (std::is_same_v<Key, Lanx::IntfId>) {
            return 'I';
        } else {
            return requires(Key key) { key.contains(key); } ? 'P' : 'A';
        }
    }
};

void addRow(std::ostream& table, const std::string& key, const std::string& absent,
            const std::string& help) {
    table << "| " << std::left << std::setw(34) << key << " | " << std::setw(9) << absent << " | "
          << help << " |\n";
}

template <HasMembers T>
void addMembers(std::ostream& table, const std::string& path) {
    forEachMember<T>(
        [&]<typename Value, typename Default>(const Member<T, Value, Default>& member) {
            const std::string key = Within<Value>::path(path + member.key);
            addRow(table, '`' + key + '`', textOf(member.absent), member.help);
            if constexpr (HasMembers<typename Within<Value>::Type>) {
                addMembers<typename Within<Value>::Type>(table, key + '.');
            }
        });
}

TEST(Schema, TheManualListsItsKeysDefaultsAndMeanings) {
    std::ostringstream table;
    addRow(table, "Key", "Default", "Meaning");
    table << "|------------------------------------|-----------|---------|\n";
    addMembers<DevicePatch>(table, "");
    std::ostringstream manual;
    manual << std::ifstream(DIRECTNET_SOURCE_DIR "/docs/agent.md").rdbuf();
    EXPECT_NE(manual.str().find("\n\n" + table.str() + '\n'), std::string::npos)
        << "docs/agent.md should have:\n"
        << table.str();
}

} // namespace
} // namespace Agent
