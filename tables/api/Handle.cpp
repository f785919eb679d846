#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <poll.h>

#include "tables/api/View.h"
#include "tables/layout/Atomic.h"

// Opening, waiting, and what is known of the writers.

namespace {

using namespace Tables;

bool openView(directnet_tables& tables, const char* folder, unsigned flags) {
    ErrorText& error = tables.error;
    if (!tables.folder.pathIs(folder, error)) {
        return false;
    }
    const Found found = tables.folder.look(error);
    if (found == Found::absent && (flags & DIRECTNET_TABLES_WAIT) == 0) {
        error.set("%s: %s", folder, std::strerror(ENOENT));
        return false;
    }
    return found != Found::refused && tables.watch.open(error);
}

/// The first of the tables that is there: they have the same writer.
template <typename... Mirrors>
const TableFile* fileOf(const Mirrors&... mirrors) {
    const TableFile* found = nullptr;
    const bool any = ((found = &mirrors.file(), found->isOpen()) || ...);
    return any ? found : nullptr;
}

} // namespace

directnet_tables* directnet_tables_open(const char* folder, unsigned flags, char* error,
                                        std::size_t errorSize) {
    const auto explain = [&](const char* text) {
        if (error != nullptr && errorSize != 0) {
            std::snprintf(error, errorSize, "%s", text);
        }
    };
    void* const memory = std::malloc(sizeof(directnet_tables));
    if (memory == nullptr) {
        explain(std::strerror(ENOMEM));
        return nullptr;
    }
    auto* const tables = ::new (memory) directnet_tables;
    if (!openView(*tables, folder, flags)) {
        explain(tables->error.text());
        directnet_tables_close(tables);
        return nullptr;
    }
    return tables;
}

void directnet_tables_close(directnet_tables* tables) {
    if (tables != nullptr) {
        tables->~directnet_tables();
        std::free(tables);
    }
}

const char* directnet_tables_error(const directnet_tables* tables) { return tables->error.text(); }

int directnet_tables_descriptor(const directnet_tables* tables) {
    return tables->watch.descriptor();
}

int directnet_tables_wait(directnet_tables* tables, int timeout_ms) {
    pollfd polled{tables->watch.descriptor(), POLLIN, 0};
    const int ready = ::poll(&polled, 1, timeout_ms);
    if (ready < 0 && errno != EINTR) {
        tables->error.set("cannot wait for tables: %s", std::strerror(errno));
        return -1;
    }
    return ready > 0 ? 1 : 0;
}

void directnet_tables_writer(const directnet_tables* tables, directnet_record_kind kind,
                             directnet_writer* writer) {
    *writer = {};
    const TableFile* const file = kind == DIRECTNET_LEAK
                                      ? fileOf(tables->leaks4, tables->leaks6)
                                      : fileOf(tables->routes4, tables->routes6, tables->viaSets,
                                               tables->vias4, tables->vias6, tables->vrfs);
    if (file == nullptr) {
        return;
    }
    const TableHeader& header = file->header();
    writer->present = 1;
    writer->lives = file->writerLives() ? 1 : 0;
    writer->pid = load(header.writerPid);
    writer->epoch = load(header.epoch);
    writer->opened_at = load(header.openedAt);
    writer->heard_of_at = load(header.heardOfAt);
    writer->closed_at = load(header.closedAt);
    if (writer->lives == 0) {
        writer->absent_since = writer->closed_at != 0 ? writer->closed_at : writer->heard_of_at;
    }
}
