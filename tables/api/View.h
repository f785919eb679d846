#pragma once

#include <array>
#include <cstdint>

#include "directnet/tables.h"
#include "tables/api/Departures.h"
#include "tables/layout/TablePaths.h"
#include "tables/reader/ErrorText.h"
#include "tables/reader/Folder.h"
#include "tables/reader/FolderWatch.h"
#include "tables/reader/Mirror.h"

/// A folder of tables with the view of it that the functions of directnet/tables.h give.
struct directnet_tables {
    template <typename Record>
    using Mirror = Tables::Mirror<Record>;
    using RouteMirror = Mirror<Tables::RouteRecord>;
    using ViaMirror = Mirror<Tables::ViaRecord>;
    using LeakMirror = Mirror<Tables::LeakRecord>;

    Tables::Folder folder;
    Tables::FolderWatch watch;
    Tables::ErrorText error;

    Mirror<Tables::VrfRecord> vrfs{Tables::Paths::vrfs};
    Mirror<Tables::ViaSetRecord> viaSets{Tables::Paths::viaSets};
    ViaMirror vias4{Tables::Paths::ipv4Vias, Tables::ipv4};
    ViaMirror vias6{Tables::Paths::ipv6Vias, Tables::ipv6};
    RouteMirror routes4{Tables::Paths::ipv4Routes, Tables::ipv4};
    RouteMirror routes6{Tables::Paths::ipv6Routes, Tables::ipv6};
    LeakMirror leaks4{Tables::Paths::ipv4Leaks, Tables::ipv4};
    LeakMirror leaks6{Tables::Paths::ipv6Leaks, Tables::ipv6};

    /// What went in the present update, while routes that went with it are told of.
    Tables::Departures<Tables::VrfRecord> goneVrfs;
    Tables::Departures<Tables::ViaSetRecord> goneViaSets;
    Tables::Departures<Tables::ViaRecord> goneVias4;
    Tables::Departures<Tables::ViaRecord> goneVias6;

    /// How many routes there are of each length.
    std::array<std::uint32_t, 33> lengths4{};
    std::array<std::uint32_t, 129> lengths6{};
};
