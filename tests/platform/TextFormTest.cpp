#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "platform/orb/attribute/Value.h"
#include "platform/orb/value/Text.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Orb {

namespace {

class Settings {
    ORB_VALUE(Settings, "Test::Settings", (std::uint32_t, limit, 7), (L3::VrfName, vrf, "default"),
              (std::string, note))
};

class Holder {
    ORB_VALUE(Holder, "Test::Holder", (Settings, settings))
};

template <typename T>
void expectReadsBack(T value) {
    EXPECT_EQ(valueFromStrep<T>(valueToStrep(value)), value);
}

TEST(TextForm, ExtremesReadBack) {
    expectReadsBack(std::numeric_limits<std::int64_t>::min());
    expectReadsBack(std::numeric_limits<std::uint64_t>::max());
    expectReadsBack(std::numeric_limits<double>::denorm_min());
    expectReadsBack(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(valueFromStrep<double>(valueToStrep(std::nan("")))));

    std::mt19937_64 random(3);
    for (int round = 0; round < 10000; ++round) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isnan(value)) {
            ASSERT_EQ(valueFromStrep<double>(valueToStrep(value)), value);
        }
    }
}

TEST(TextForm, StringHoldsPrintableAsciiOnly) {
    EXPECT_EQ(valueToStrep(std::string("it's\\\n\x1f~\x7f\xff", 10)),
              R"('it\'s\\\x0a\x1f~\x7f\xff')");
}

TEST(TextForm, SloppyTextIsRefused) {
    for (const char* text : {"", "-", "+1", "01", "-0", "00", " 1", "1 ", "0x1", "1.0"}) {
        EXPECT_THROW(valueFromStrep<int>(text), ParseError) << text;
    }
    EXPECT_THROW(valueFromStrep<std::uint32_t>("-1"), ParseError);
    for (const char* text : {"true", "Tru", "1", "Truee", ""}) {
        EXPECT_THROW(valueFromStrep<bool>(text), ParseError) << text;
    }
    for (const char* text :
         {"a", "'", "'a", R"('\)", R"('\')", R"('\a')", R"('\x1')", R"('\xAB')", "'\n'", "'a'b"}) {
        EXPECT_THROW(valueFromStrep<std::string>(text), ParseError) << text;
    }
}

TEST(TextForm, TooLargeNumberIsRefused) {
    EXPECT_THROW(valueFromStrep<std::uint8_t>("256"), RangeError);
    EXPECT_THROW(valueFromStrep<std::int8_t>("-129"), RangeError);
    EXPECT_THROW(valueFromStrep<Vrf::VrfIdMap::VrfId>("4294967296"), RangeError);
    EXPECT_THROW(valueFromStrep<double>("1e999"), RangeError);
}

TEST(CompositeValue, DefaultIsTheDeclaredOne) {
    EXPECT_EQ(Settings(), Settings(7, "default", ""));
    EXPECT_TRUE(!Settings(7, "default", ""));
    EXPECT_FALSE(!Settings(0, "default", ""));
}

TEST(CompositeValue, OtherTypeOrFieldOrderIsRefused) {
    for (const char* text : {
             "Value('Test::Holder', ** {'limit': 1, 'vrf': '', 'note': ''})",
             "Value('Test::Settings', ** {'vrf': '', 'limit': 1, 'note': ''})",
             "Value('Test::Settings', ** {'limit': 1,'vrf': '', 'note': ''})",
             "Value('Test::Settings', ** {, 'limit': 1, 'vrf': '', 'note': ''})",
             "Value('Test::Settings', ** {'limit': 1, 'vrf': ''})",
         }) {
        EXPECT_THROW(valueFromStrep<Settings>(text), ParseError) << text;
    }
}

TEST(CompositeValue, NestedRangeErrorNamesThePath) {
    const std::pair<std::string, std::string> cases[] = {
        {"'limit': 1, 'vrf': '" + std::string(101, 'v') + "', 'note': ''",
         "settings: vrf: VrfName::bytes > VrfName::maxLength not allowed"},
        {"'limit': 4294967296, 'vrf': '', 'note': ''", "settings: limit: integer out of range"}};
    for (const auto& [fields, expected] : cases) {
        try {
            valueFromStrep<Holder>("Value('Test::Holder', ** {'settings': Value('Test::Settings', "
                                   "** {"
                                   + fields + "})})");
            ADD_FAILURE() << "read";
        } catch (const RangeError& error) {
            EXPECT_EQ(error.what(), expected);
        }
    }
}

} // namespace

} // namespace Orb
