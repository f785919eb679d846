#include <cstdint>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "agent/document/JsonWriter.h"

namespace {

using Json = nlohmann::ordered_json;

/// Documents and text that are the same by construction.
class RandomDocument {
  public:
    explicit RandomDocument(std::uint32_t seed) : random_(seed) {}

    Json make(Agent::JsonWriter& writer, int depth = 0) {
        switch (below(depth < 4 ? 7 : 5)) {
        case 0:
            writer.null();
            return nullptr;
        case 1:
            writer.value(true);
            return true;
        case 2: {
            const auto number = static_cast<int>(below(1000)) - 500;
            writer.value(number);
            return number;
        }
        case 3: {
            // Others the library may write with more digits than it takes.
            const double seconds = below(1U << 30U) / 64.0;
            writer.seconds(seconds);
            return seconds;
        }
        case 4: {
            const std::string string = text();
            writer.value(string);
            return string;
        }
        case 5: {
            Json array = Json::array();
            writer.beginArray();
            for (std::uint32_t count = below(4); count > 0; --count) {
                array.push_back(make(writer, depth + 1));
            }
            writer.endArray();
            return array;
        }
        default:
            return object(writer, depth);
        }
    }

  private:
    std::uint32_t below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(random_() % bound);
    }

    std::string text() {
        static const std::vector<std::string> parts{"a",          "\"",     "\\",  "/",    "\n",
                                                    "\t",         "\x01",   " ",   "\x7f", "é",
                                                    "\U0001F600", "\b\f\r", "\x1f"};
        std::string text;
        for (std::uint32_t count = below(5); count > 0; --count) {
            text += parts[below(static_cast<std::uint32_t>(parts.size()))];
        }
        return text;
    }

    Json object(Agent::JsonWriter& writer, int depth) {
        Json object = Json::object();
        writer.beginObject();
        for (std::uint32_t count = below(4); count > 0; --count) {
            const std::string key = text() + std::to_string(count);
            writer.key(key);
            object[key] = make(writer, depth + 1);
        }
        writer.endObject();
        return object;
    }

    std::mt19937 random_;
};

TEST(JsonWriter, TextIsWhatTheLibraryWrites) {
    for (std::uint32_t seed = 0; seed < 2000; ++seed) {
        std::string written;
        Agent::JsonWriter writer(written);
        const Json expected = RandomDocument(seed).make(writer);
        ASSERT_EQ(written, expected.dump()) << "seed " << seed;
    }
}

TEST(JsonWriter, BytesThatAreNoUtf8AreReplaced) {
    for (const std::string bad : {"\xff", "\xc3(", "\xed\xa0\x80", "a\xf0\x9f"}) {
        std::string written;
        Agent::JsonWriter(written).value(bad);
        EXPECT_FALSE(Json::parse(written, nullptr, false).is_discarded()) << written;
        EXPECT_NE(written.find("\xef\xbf\xbd"), std::string::npos) << written;
    }
}

} // namespace
