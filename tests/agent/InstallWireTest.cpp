#include "agent/install/InstallWire.h"

#include <cstring>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <string>
#include <vector>

namespace Agent {
namespace {

using Lanx::IpGenPrefix;

const nlmsghdr& headerOf(const std::vector<std::byte>& message) {
    return *reinterpret_cast<const nlmsghdr*>(message.data());
}

TEST(InstallWireTest, RequestsAreReadAsWhatTheyAskFor) {
    const auto route = [](const char* prefix, std::uint8_t type, std::uint8_t scope,
                          std::uint32_t table, std::uint32_t metric) {
        return KernelEntry{.type = type,
                           .scope = scope,
                           .link = 7,
                           .table = table,
                           .metric = metric,
                           .prefix = IpGenPrefix::fromString(prefix)};
    };
    const KernelEntry proxy{
        .isProxy = true, .link = 7, .prefix = IpGenPrefix::fromString("2001:db8::9/128")};
    for (const KernelEntry& entry :
         {route("10.1.0.9/32", RTN_LOCAL, RT_SCOPE_HOST, RT_TABLE_LOCAL, 0),
          route("10.1.0.0/24", RTN_UNICAST, RT_SCOPE_LINK, RT_TABLE_MAIN, 0),
          route("0.0.0.0/0", RTN_BLACKHOLE, RT_SCOPE_UNIVERSE, 4000000000, 5),
          route("2001:db8::9/128", RTN_LOCAL, RT_SCOPE_UNIVERSE, 100, 1024), proxy}) {
        for (const bool add : {true, false}) {
            std::vector<std::byte> message;
            appendEntryRequest(message, entry, 77, add, 5);
            EXPECT_EQ(headerOf(message).nlmsg_seq, 5);
            const auto read = parseEntryMessage(headerOf(message));
            ASSERT_TRUE(read) << entry.prefix.toString();
            EXPECT_EQ(read->entry, entry) << entry.prefix.toString();
            EXPECT_EQ(read->removed, !add);
            EXPECT_EQ(read->protocol, entry.isProxy && !add ? 0 : 77);
            // Cut short anywhere it is nothing, and nothing behind its end is read.
            for (std::size_t size = sizeof(nlmsghdr); size < message.size(); size += 4) {
                std::vector<std::byte> part(message.data(), message.data() + size);
                const auto length = static_cast<std::uint32_t>(size);
                std::memcpy(part.data(), &length, sizeof length);
                const auto less = parseEntryMessage(headerOf(part));
                EXPECT_TRUE(!less || less->entry.prefix.len() == 0
                            || less->entry.prefix == entry.prefix);
            }
        }
    }
}

TEST(InstallWireTest, RefusalsHaveTheKernelsWords) {
    const auto refusal = [](int code, const std::string& words, unsigned flags,
                            std::size_t claimed = 0) {
        std::vector<std::byte> message(sizeof(nlmsghdr) + sizeof(nlmsgerr));
        nlmsghdr header{};
        header.nlmsg_type = NLMSG_ERROR;
        header.nlmsg_flags = static_cast<std::uint16_t>(flags);
        header.nlmsg_seq = 9;
        nlmsgerr error{};
        error.error = -code;
        error.msg.nlmsg_len = 60; // not repeated where flags say so
        const nlattr attribute{static_cast<std::uint16_t>(
                                   sizeof(nlattr) + (claimed == 0 ? words.size() + 1 : claimed)),
                               NLMSGERR_ATTR_MSG};
        std::memcpy(message.data() + sizeof header, &error, sizeof error);
        const auto append = [&](const void* data, std::size_t size) {
            const auto* bytes = static_cast<const std::byte*>(data);
            message.insert(message.end(), bytes, bytes + size);
        };
        append(&attribute, sizeof attribute);
        append(words.c_str(), words.size() + 1);
        header.nlmsg_len = static_cast<std::uint32_t>(message.size());
        std::memcpy(message.data(), &header, sizeof header);
        message.shrink_to_fit();
        const auto read = parseRefusalMessage(headerOf(message));
        return read && read->sequence == 9 && read->code == code ? read->words : "unread";
    };
    constexpr unsigned withWords = NLM_F_CAPPED | NLM_F_ACK_TLVS;
    EXPECT_EQ(refusal(EINVAL, "Bad metric", withWords), "Bad metric (Invalid argument)");
    EXPECT_EQ(refusal(EEXIST, "", NLM_F_CAPPED), "File exists");
    EXPECT_EQ(refusal(EINVAL, "Bad", withWords, 400), "Invalid argument");
    EXPECT_EQ(refusal(EINVAL, "Bad", NLM_F_ACK_TLVS), "Invalid argument");
    EXPECT_EQ(refusal(0, "", NLM_F_CAPPED), "");
}

} // namespace
} // namespace Agent
