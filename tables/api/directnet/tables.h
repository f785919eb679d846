#ifndef DIRECTNET_TABLES_H
#define DIRECTNET_TABLES_H

/// Reads the tables that a running directnet keeps in shared memory: routes, vias, via sets, VRFs
/// and leaks. The reader never makes a writer wait and needs none to be there. docs/tables.md says
/// what may be relied on.
///
/// A handle is one folder of tables with a view of it. The view changes in
/// directnet_tables_update() alone, so all that is asked of it in between fits together. A table
/// that goes away, or whose writer does, stays in the view as it was last.
///
/// A handle is used by one thread at a time; different handles are independent. A callback may ask
/// its handle everything, but must not update or close it.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define DIRECTNET_TABLES_API __attribute__((visibility("default")))

/// Families, the numbers of the socket interface.
#define DIRECTNET_IPV4 2
#define DIRECTNET_IPV6 10
#define DIRECTNET_BOTH_FAMILIES 0

/// In place of a VRF's id: every VRF, where one is asked for.
#define DIRECTNET_ALL_VRFS UINT32_MAX
/// In place of a VRF's id: no VRF. The source of a route that is not leaked.
#define DIRECTNET_NO_VRF UINT32_C(0xFFFFFF)

/// Bytes of a name with the zero that ends it, and of a prefix as text.
#define DIRECTNET_INTERFACE_SIZE 61
#define DIRECTNET_VRF_NAME_SIZE 101
#define DIRECTNET_PREFIX_TEXT_SIZE 50

/// Types of routes.
#define DIRECTNET_RECEIVE 1
#define DIRECTNET_ATTACHED_HOST 2
#define DIRECTNET_RECEIVE_BROADCAST 3
#define DIRECTNET_DROP_BROADCAST 4
#define DIRECTNET_CONNECTED 11

/// A subnet. The address is in network order, an IPv4 one in the first four bytes; all bits behind
/// `length` (0 to 32, or to 128) are zero.
typedef struct directnet_prefix {
    uint8_t family; ///< DIRECTNET_IPV4 or DIRECTNET_IPV6
    uint8_t length;
    uint8_t address[16];
} directnet_prefix;

/// One route. No two have the same VRF and prefix.
typedef struct directnet_route {
    uint64_t via_set; ///< the key of a directnet_via_set; 0 for none
    uint32_t vrf_id;
    uint32_t source_vrf_id; ///< the VRF that it is leaked from, or DIRECTNET_NO_VRF
    uint32_t metric;
    uint32_t preference;
    uint8_t type; ///< see directnet_tables_route_type_name()
    directnet_prefix prefix;
} directnet_route;

/// One via: an interface as the next hop.
typedef struct directnet_via {
    uint64_t via_id;
    uint32_t vrf_id;
    uint8_t transport;
    uint8_t routing_protocol;
    uint8_t family;
    char interface_name[DIRECTNET_INTERFACE_SIZE];
} directnet_via;

/// What the routes through a via set are for.
typedef enum directnet_via_kind {
    DIRECTNET_VIA_NONE = 0,
    DIRECTNET_VIA_CONNECTED = 1,
    DIRECTNET_VIA_RECEIVE = 2,
    DIRECTNET_VIA_RECEIVE_BROADCAST = 3,
    DIRECTNET_VIA_DIRECTED_BROADCAST = 4
} directnet_via_kind;

/// What a route refers to: a set of one via. The via is the one with the same VRF, id, transport
/// and routing protocol; a set without via has via_id 0.
typedef struct directnet_via_set {
    uint64_t key;
    uint64_t via_id;
    uint32_t vrf_id;
    uint8_t transport;
    uint8_t routing_protocol;
    uint8_t flags;
    uint8_t family;
    uint8_t kind; ///< a directnet_via_kind
} directnet_via_set;

/// One VRF. Its flags are 0 or 1.
typedef struct directnet_vrf {
    double ready_time; ///< seconds of the writer's steady clock; 0 for never
    uint32_t id;
    uint8_t ipv4_ready;
    uint8_t ipv6_ready;
    uint8_t has_rib; ///< the RIB waits for the VRF; else rib_ready and ready_time mean nothing
    uint8_t rib_ready;
    char name[DIRECTNET_VRF_NAME_SIZE];
} directnet_vrf;

/// One leak: the receive routes of a prefix, from a VRF into another.
typedef struct directnet_leak {
    uint32_t source_vrf_id;
    uint32_t dest_vrf_id;
    directnet_prefix prefix;
} directnet_leak;

/// Where a route leads.
typedef struct directnet_hop {
    directnet_via_kind kind;
    char interface_name[DIRECTNET_INTERFACE_SIZE];
} directnet_hop;

/// The kinds of records.
typedef enum directnet_record_kind {
    DIRECTNET_ROUTE = 1,
    DIRECTNET_VIA = 2,
    DIRECTNET_VIA_SET = 3,
    DIRECTNET_VRF = 4,
    DIRECTNET_LEAK = 5
} directnet_record_kind;

typedef union directnet_record {
    directnet_route route;
    directnet_via via;
    directnet_via_set via_set;
    directnet_vrf vrf;
    directnet_leak leak;
} directnet_record;

/// A record that has come (no `before`), changed, or gone (no `after`). Both have the same key.
typedef struct directnet_change {
    directnet_record_kind kind;
    const directnet_record* before; ///< NULL for none
    const directnet_record* after;  ///< NULL for none
} directnet_change;

/// How many records the view has. A via or via set of neither family counts nowhere.
typedef struct directnet_sizes {
    uint64_t ipv4_routes;
    uint64_t ipv6_routes;
    uint64_t ipv4_vias;
    uint64_t ipv6_vias;
    uint64_t ipv4_via_sets;
    uint64_t ipv6_via_sets;
    uint64_t vrfs;
    uint64_t leaks;
} directnet_sizes;

/// Who writes tables, and since when nobody does. Times are nanoseconds since 1970, 0 for never.
typedef struct directnet_writer {
    uint8_t present; ///< whether there is a table; if not, all is 0
    uint8_t lives;   ///< whether the writer runs or is stopped; it is dead or has left if not
    uint32_t pid;    ///< of the present writer, or of the last one
    uint64_t epoch;  ///< counts the writers, from 1
    uint64_t opened_at;
    uint64_t heard_of_at;  ///< told about once a second while the writer runs, so not while stopped
    uint64_t closed_at;    ///< 0 if it did not leave in good order
    uint64_t absent_since; ///< 0 while it lives; else closed_at, or heard_of_at without one
} directnet_writer;

/// An open folder.
typedef struct directnet_tables directnet_tables;

/// Given each record that is asked for. The pointer is valid during the call. Anything but 0 ends
/// the walk.
typedef int (*directnet_route_callback)(const directnet_route* route, void* context);
typedef int (*directnet_via_callback)(const directnet_via* via, void* context);
typedef int (*directnet_via_set_callback)(const directnet_via_set* via_set, void* context);
typedef int (*directnet_leak_callback)(const directnet_leak* leak, void* context);
/// Given each change. The pointers are valid during the call.
typedef void (*directnet_change_callback)(const directnet_change* change, void* context);

/// The folder may come later. Without it, opening one that is not there fails.
#define DIRECTNET_TABLES_WAIT 1u

/// Opens the tables of a folder. The view is empty until the first update. The handle holds about
/// a dozen descriptors.
///
/// @param folder  its path; no symbolic link itself
/// @param flags   0 or DIRECTNET_TABLES_WAIT
/// @param error   gets the text of an error, ended by a zero and cut to errorSize; may be NULL
/// @return        NULL on failure. To be given to directnet_tables_close().
DIRECTNET_TABLES_API directnet_tables* directnet_tables_open(const char* folder, unsigned flags,
                                                             char* error, size_t errorSize);

/// Ends the handle. NULL is allowed.
DIRECTNET_TABLES_API void directnet_tables_close(directnet_tables* tables);

/// The text of the last error of the handle, empty if there was none. Valid until the next call.
DIRECTNET_TABLES_API const char* directnet_tables_error(const directnet_tables* tables);

/// Brings the view to the present, or a little beyond, and tells every change on the way in the
/// writer's order, those left out that were overtaken meanwhile. A reader that has fallen behind,
/// and one that finds another writer, is told how the state differs from its view.
///
/// A route can be resolved whenever it is told of: VRFs, vias and via sets that come are told
/// before the routes and leaks, those that go after them. At a writer that changes all of them
/// without a pause, a route may be told as gone an update after its via set. A VRF may go an update
/// before its last routes: that is how its writer takes it away.
///
/// A table that is refused stays in the view as it was; the others are brought to the present all
/// the same. A table or folder that is not there is no error.
///
/// @param callback  may be NULL
/// @return          how many changes there were; -1 on an error, also when some table was brought
///                  to the present
DIRECTNET_TABLES_API int64_t directnet_tables_update(directnet_tables* tables,
                                                     directnet_change_callback callback,
                                                     void* context);

/// A descriptor that becomes readable when an update may find something: to be polled, nothing
/// else. It stays readable until the next update. The same for the life of the handle, which owns
/// it.
DIRECTNET_TABLES_API int directnet_tables_descriptor(const directnet_tables* tables);

/// Waits until an update may find something.
///
/// @param timeout_ms  milliseconds; negative for ever
/// @return            1; 0 when the time was over or a signal came; -1 on an error
DIRECTNET_TABLES_API int directnet_tables_wait(directnet_tables* tables, int timeout_ms);

/// How many VRFs there are.
DIRECTNET_TABLES_API size_t directnet_tables_vrf_count(const directnet_tables* tables);

/// Gives a VRF by its index below directnet_tables_vrf_count(), in no particular order; by its id;
/// or by its name.
///
/// @return  1; 0 if there is none, and *vrf is left alone
DIRECTNET_TABLES_API int directnet_tables_vrf_at(const directnet_tables* tables, size_t index,
                                                 directnet_vrf* vrf);
DIRECTNET_TABLES_API int directnet_tables_vrf_by_id(const directnet_tables* tables, uint32_t id,
                                                    directnet_vrf* vrf);
DIRECTNET_TABLES_API int directnet_tables_vrf_by_name(const directnet_tables* tables,
                                                      const char* name, directnet_vrf* vrf);

/// Gives each route of a VRF, or of DIRECTNET_ALL_VRFS, in a family, or in
/// DIRECTNET_BOTH_FAMILIES, in no particular order. Costs a look at every route of the family.
///
/// @return  what the callback returned that ended the walk; 0 otherwise
DIRECTNET_TABLES_API int directnet_tables_each_route(const directnet_tables* tables,
                                                     uint32_t vrf_id, int family,
                                                     directnet_route_callback callback,
                                                     void* context);
/// The same for vias, via sets and leaks. A leak is one of its source VRF.
DIRECTNET_TABLES_API int directnet_tables_each_via(const directnet_tables* tables, uint32_t vrf_id,
                                                   int family, directnet_via_callback callback,
                                                   void* context);
DIRECTNET_TABLES_API int directnet_tables_each_via_set(const directnet_tables* tables,
                                                       uint32_t vrf_id, int family,
                                                       directnet_via_set_callback callback,
                                                       void* context);
DIRECTNET_TABLES_API int directnet_tables_each_leak(const directnet_tables* tables, uint32_t vrf_id,
                                                    int family, directnet_leak_callback callback,
                                                    void* context);

/// Counts the records. Costs a look at every via set.
DIRECTNET_TABLES_API void directnet_tables_sizes(const directnet_tables* tables,
                                                 directnet_sizes* sizes);

/// Gives the route of exactly that prefix.
///
/// @return  1; 0 if there is none, and *route is left alone
DIRECTNET_TABLES_API int directnet_tables_find(const directnet_tables* tables, uint32_t vrf_id,
                                               const directnet_prefix* prefix,
                                               directnet_route* route);

/// Gives the route of the longest prefix that has the address in it. Costs one look for each length
/// that some route has.
///
/// @param family   DIRECTNET_IPV4 or DIRECTNET_IPV6
/// @param address  4 or 16 bytes in network order
/// @return         1; 0 if there is none, and *route is left alone
DIRECTNET_TABLES_API int directnet_tables_match(const directnet_tables* tables, uint32_t vrf_id,
                                                int family, const void* address,
                                                directnet_route* route);

/// Follows a route to its interface. A route that has just been told as gone is followed through
/// what went with it, as long as the update lasts.
///
/// @return  1; 0 if its via set or via is not there, and *hop has no name and kind
DIRECTNET_TABLES_API int directnet_tables_resolve(const directnet_tables* tables,
                                                  const directnet_route* route, directnet_hop* hop);

/// Tells of the writer of a kind of records as it is now; routes, vias, via sets and VRFs have the
/// same one.
///
/// @param kind  DIRECTNET_LEAK for the writer of leaks, any other for that of routes
DIRECTNET_TABLES_API void directnet_tables_writer(const directnet_tables* tables,
                                                  directnet_record_kind kind,
                                                  directnet_writer* writer);

/// What people call a type of routes and a kind of via sets; empty if it is none of them.
DIRECTNET_TABLES_API const char* directnet_tables_route_type_name(uint8_t type);
DIRECTNET_TABLES_API const char* directnet_tables_via_kind_name(directnet_via_kind kind);

/// Writes a prefix as "10.1.1.0/24" with a zero behind it.
///
/// @param size  of text; DIRECTNET_PREFIX_TEXT_SIZE is always enough
/// @return      1; 0 if it is no prefix or does not fit, and text is empty
DIRECTNET_TABLES_API int directnet_tables_prefix_text(const directnet_prefix* prefix, char* text,
                                                      size_t size);

/// Reads a prefix from text. All of an address without "/" is taken; bits behind the length must be
/// zero.
///
/// @return  1; 0 if the text is none, and *prefix is left alone
DIRECTNET_TABLES_API int directnet_tables_prefix_parse(const char* text, directnet_prefix* prefix);

#ifdef __cplusplus
}
#endif

#endif
