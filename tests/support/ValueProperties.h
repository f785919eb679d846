#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "platform/orb/value/Hash.h"
#include "platform/orb/value/Text.h"
#include "tests/support/RandomValues.h"

namespace TestSupport {

/// What every value type promises, as typed tests: a test file instantiates them with
/// INSTANTIATE_TYPED_TEST_SUITE_P(Name, ValueProperties, Types).
template <typename T>
class ValueProperties : public testing::Test {
  protected:
    RandomValues random{20240611};
};

TYPED_TEST_SUITE_P(ValueProperties);

TYPED_TEST_P(ValueProperties, TextReadsBackAsTheSameValue) {
    for (int round = 0; round < 2000; ++round) {
        const TypeParam value = this->random.template make<TypeParam>();
        const std::string text = Orb::valueToStrep(value);
        ASSERT_EQ(Orb::valueFromStrep<TypeParam>(text), value) << text;
    }
}

TYPED_TEST_P(ValueProperties, TruncatedOrExtendedTextIsRefused) {
    for (int round = 0; round < 20; ++round) {
        const std::string text = Orb::valueToStrep(this->random.template make<TypeParam>());
        ASSERT_THROW(Orb::valueFromStrep<TypeParam>(text + " "), Orb::ParseError) << text;
        if (text.back() != '\'' && text.back() != '}' && text.back() != ')') {
            continue; // a number, whose head is a number too
        }
        for (std::size_t length = 0; length < text.size(); ++length) {
            ASSERT_THROW(Orb::valueFromStrep<TypeParam>(text.substr(0, length)), Orb::ParseError)
                << text.substr(0, length);
        }
    }
}

TYPED_TEST_P(ValueProperties, OrderAndHashAgreeWithEquality) {
    std::deque<TypeParam> values(1);
    for (int round = 0; round < 100; ++round) {
        values.push_back(this->random.template make<TypeParam>());
    }
    std::sort(values.begin(), values.end());
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(Orb::hashOf(values[i], 7), Orb::hashOf(TypeParam(values[i]), 7));
        for (std::size_t j = i + 1; j < values.size(); ++j) {
            const bool equal = values[i] == values[j];
            ASSERT_EQ(values[i] < values[j], !equal);
            ASSERT_FALSE(values[j] < values[i]);
            ASSERT_EQ(Orb::hashOf(values[i], 7) == Orb::hashOf(values[j], 7), equal);
        }
    }
}

REGISTER_TYPED_TEST_SUITE_P(ValueProperties, TextReadsBackAsTheSameValue,
                            TruncatedOrExtendedTextIsRefused, OrderAndHashAgreeWithEquality);

} // namespace TestSupport
