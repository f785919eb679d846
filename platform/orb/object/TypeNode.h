#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <string_view>

#include "platform/orb/object/AttributeDescription.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Name.h"

namespace Orb {

class Entity;

/// What the framework knows of a class: its qualified name, its attributes and, for a class that
/// needs no more than a name, how to make one.
class TypeNode {
  public:
    using Create = Ptr<Entity> (*)(const Name&);

    TypeNode(std::string_view name, std::span<const AttributeDescription> attributes,
             Create creator)
        : name_(name), attributes_(attributes), create_(creator) {}
    TypeNode(const TypeNode&) = delete;
    TypeNode& operator=(const TypeNode&) = delete;

    std::string_view name() const { return name_; }
    std::span<const AttributeDescription> attributes() const { return attributes_; }

    /// The attribute of that name, or null.
    const AttributeDescription* attribute(std::string_view name) const;

    /// Makes an entity; null where a name alone does not do.
    Ptr<Entity> create(const Name& name) const;

  private:
    friend class AllocTrackTypeInfo;

    std::string_view name_;
    std::span<const AttributeDescription> attributes_;
    Create create_;
    mutable std::atomic<std::size_t> living_{0};
};

} // namespace Orb
