#pragma once

#include "directnet/model/Traits.h"
#include "platform/orb/attribute/DefineType.h"

/// ORB_DEFINE_TYPE of a class template over the address families, and its two instances. Stands
/// behind the definitions of its members; the header declares the instances `extern template`.
#define DIRECTNET_DEFINE_FAMILY_TYPE(Class)                                                        \
    template <typename Family>                                                                     \
    const Orb::TypeNode& Class<Family>::fwkType() {                                                \
        return Orb::typeNodeOf<Class>();                                                           \
    }                                                                                              \
    template <typename Family>                                                                     \
    const Orb::TypeNode* Class<Family>::fwkTypeNode() const {                                      \
        return &fwkType();                                                                         \
    }                                                                                              \
    template class Class<Traits::IPv4>;                                                            \
    template class Class<Traits::IPv6>;
