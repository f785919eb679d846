#!/usr/bin/env python3
"""Follows the tables of connected routes: the state first, then each change as it comes, also when
the agent comes later, restarts or goes. Runs until it is stopped.  tables_follow.py [FOLDER]"""
import ctypes
import sys
from ctypes import POINTER, Structure, Union, byref, c_char, c_char_p, c_double, c_int, c_int64
from ctypes import c_size_t, c_uint, c_uint8, c_uint32, c_uint64, c_void_p


def structure(title, /, **fields):
    return type(title, (Structure,), {"_fields_": list(fields.items())})


Prefix = structure("Prefix", family=c_uint8, length=c_uint8, address=c_uint8 * 16)
Route = structure("Route", via_set=c_uint64, vrf_id=c_uint32, source_vrf_id=c_uint32,
                  metric=c_uint32, preference=c_uint32, type=c_uint8, prefix=Prefix)
Vrf = structure("Vrf", ready_time=c_double, id=c_uint32, ipv4_ready=c_uint8, ipv6_ready=c_uint8,
                has_rib=c_uint8, rib_ready=c_uint8, name=c_char * 101)
Hop = structure("Hop", kind=c_int, interface_name=c_char * 61)


class Record(Union):  # of the five kinds, the two that are printed
    _fields_ = [("route", Route), ("vrf", Vrf)]


Change = structure("Change", kind=c_int, before=POINTER(Record), after=POINTER(Record))
OnChange = ctypes.CFUNCTYPE(None, POINTER(Change), c_void_p)
ROUTE, VRF, WAIT, NO_VRF = 1, 4, 1, 0xFFFFFF
folder = sys.argv[1] if len(sys.argv) > 1 else "/dev/shm/directnet"
lib = ctypes.CDLL("libdirectnet-tables.so.0")
for name, result, arguments in (
        ("open", c_void_p, [c_char_p, c_uint, c_char_p, c_size_t]),
        ("error", c_char_p, [c_void_p]),
        ("update", c_int64, [c_void_p, OnChange, c_void_p]),
        ("wait", c_int, [c_void_p, c_int]),
        ("resolve", c_int, [c_void_p, POINTER(Route), POINTER(Hop)]),
        ("vrf_by_id", c_int, [c_void_p, c_uint32, POINTER(Vrf)]),
        ("via_kind_name", c_char_p, [c_int]),
        ("prefix_text", c_int, [POINTER(Prefix), c_char_p, c_size_t])):
    function = globals()[name] = lib["directnet_tables_" + name]
    function.restype, function.argtypes = result, arguments


def vrf_name(number):
    vrf = Vrf()
    return vrf.name.decode() if vrf_by_id(tables, number, byref(vrf)) else "?"


def route_text(route):
    prefix, hop = ctypes.create_string_buffer(50), Hop()
    prefix_text(byref(route.prefix), prefix, len(prefix))
    text = f"{vrf_name(route.vrf_id)} {prefix.value.decode()}"
    if resolve(tables, byref(route), byref(hop)):
        text += f" on {hop.interface_name.decode()}, {via_kind_name(hop.kind).decode()}"
    if route.source_vrf_id != NO_VRF:
        text += f", leaked from {vrf_name(route.source_vrf_id)}"
    return text


@OnChange
def print_change(change, _context):
    change = change.contents
    record = (change.after or change.before).contents
    sign = "-" if not change.after else "*" if change.before else "+"
    if change.kind == ROUTE:
        print(sign, route_text(record.route))
    elif change.kind == VRF:
        flags = ["yes" if up else "no" for up in (record.vrf.ipv4_ready, record.vrf.ipv6_ready)]
        print(f"{sign} VRF {record.vrf.name.decode()}, ready ipv4 {flags[0]} ipv6 {flags[1]}")


text = ctypes.create_string_buffer(512)
tables = open(folder.encode(), WAIT, text, len(text)) or sys.exit(text.value.decode())
while True:
    if update(tables, print_change, None) < 0:
        print(error(tables).decode(), file=sys.stderr)
    sys.stdout.flush()
    wait(tables, -1)
