/* Follows the tables of connected routes: the state first, then each change as it comes, also when
 * the agent comes later, restarts or goes. Runs until it is stopped.
 *
 *     tables_follow [FOLDER]        /dev/shm/directnet without one
 */

#include <stdio.h>
#include <string.h>

#include <directnet/tables.h>

static const char* nameOf(const directnet_tables* tables, uint32_t id, directnet_vrf* vrf) {
    return directnet_tables_vrf_by_id(tables, id, vrf) ? vrf->name : "?";
}

static void printRoute(const directnet_tables* tables, char sign, const directnet_route* route) {
    directnet_vrf vrf;
    directnet_hop hop;
    char prefix[DIRECTNET_PREFIX_TEXT_SIZE];
    directnet_tables_prefix_text(&route->prefix, prefix, sizeof prefix);
    printf("%c %s %s", sign, nameOf(tables, route->vrf_id, &vrf), prefix);
    if (directnet_tables_resolve(tables, route, &hop)) {
        printf(" on %s, %s", hop.interface_name, directnet_tables_via_kind_name(hop.kind));
    }
    if (route->source_vrf_id != DIRECTNET_NO_VRF) {
        printf(", leaked from %s", nameOf(tables, route->source_vrf_id, &vrf));
    }
    putchar('\n');
}

static void printChange(const directnet_change* change, void* context) {
    const directnet_tables* tables = context;
    const directnet_record* record = change->after != NULL ? change->after : change->before;
    const char sign = change->before == NULL ? '+' : change->after == NULL ? '-' : '*';
    if (change->kind == DIRECTNET_ROUTE) {
        printRoute(tables, sign, &record->route);
    } else if (change->kind == DIRECTNET_VRF) {
        printf("%c VRF %s, ready ipv4 %s ipv6 %s\n", sign, record->vrf.name,
               record->vrf.ipv4_ready ? "yes" : "no", record->vrf.ipv6_ready ? "yes" : "no");
    }
}

/* Says when the writer has come, gone or been followed by another one. */
static void printWriter(const directnet_tables* tables, directnet_writer* known) {
    directnet_writer writer;
    directnet_tables_writer(tables, DIRECTNET_ROUTE, &writer);
    if (writer.lives != known->lives || writer.epoch != known->epoch) {
        printf("# writer %u %s, epoch %llu\n", (unsigned)writer.pid,
               writer.lives ? "is there" : "is gone", (unsigned long long)writer.epoch);
        *known = writer;
    }
}

int main(int argc, char** argv) {
    char error[256];
    directnet_writer known;
    directnet_tables* tables = directnet_tables_open(argc > 1 ? argv[1] : "/dev/shm/directnet",
                                                     DIRECTNET_TABLES_WAIT, error, sizeof error);
    if (tables == NULL) {
        fprintf(stderr, "%s\n", error);
        return 1;
    }
    memset(&known, 0, sizeof known);
    do {
        if (directnet_tables_update(tables, printChange, tables) < 0) {
            fprintf(stderr, "%s\n", directnet_tables_error(tables));
        }
        printWriter(tables, &known);
        fflush(stdout);
    } while (directnet_tables_wait(tables, -1) >= 0);
    fprintf(stderr, "%s\n", directnet_tables_error(tables));
    directnet_tables_close(tables);
    return 1;
}
