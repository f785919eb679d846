#include "agent/topics/Topics.h"

#include <algorithm>

namespace Agent {

// Each in a source of its own, which also says what it is about.
extern const Topic stateTopic;
extern const Topic vrfsTopic;
extern const Topic vipsTopic;
extern const Topic leaksTopic;
extern const Topic backlogTopic;
extern const Topic statusTopic;
extern const Topic metricsTopic;

std::span<const Topic* const> topics() {
    static constexpr const Topic* all[] = {&stateTopic,   &vrfsTopic,  &vipsTopic,   &leaksTopic,
                                           &backlogTopic, &traceTopic, &statusTopic, &metricsTopic};
    return all;
}

const Topic* findTopic(std::string_view name) {
    const auto found = std::ranges::find(topics(), name, &Topic::name);
    return found == topics().end() ? nullptr : *found;
}

} // namespace Agent
