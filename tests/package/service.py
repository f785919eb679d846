"""Runs the installed service as its unit says, in the place of a service manager.

It sees to it that READY comes once the routes of the VRFs that are waited for are there and not before,
that a reload with a good and with a bad configuration ends as it should, and that a stop takes all along.
"""

import json
import os
import re
import shlex
import signal
import socket
import subprocess
import sys

UNIT = "/lib/systemd/system/directnet.service"
OPTIONS = "/etc/default/directnet"
CONFIG = "/run/directnet-test.json"
SECONDS = 60


def expect(condition, what):
    if not condition:
        sys.exit(f"service: {what}")


def command_of(key):
    """The command line of the unit, with the options that the administrator has set."""
    with open(UNIT, encoding="utf-8") as unit:
        command = re.search(f"^{key}=(.*)$", unit.read(), re.MULTILINE).group(1)
    with open(OPTIONS, encoding="utf-8") as options:
        set_options = re.search("^DIRECTNET_OPTIONS=(.*)$", options.read(), re.MULTILINE).group(1)
    return shlex.split(command.replace("$DIRECTNET_OPTIONS", set_options))


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=SECONDS, check=False)


def configure(document):
    with open(CONFIG, "w", encoding="utf-8") as config:
        config.write(document if isinstance(document, str) else json.dumps(document))


def virtual_ip(address):
    return {"virtualIps": {"ipv4": {"default": {address: {"lo": True}}}}}


class Manager:
    """The socket that the service tells how it is."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind("/run/notify")
        self.said = []

    def hear(self, seconds):
        """The next message; None if there is none in that time."""
        self.socket.settimeout(seconds)
        try:
            self.said.append(self.socket.recv(4096).decode())
        except TimeoutError:
            return None
        return self.said[-1]

    def until(self, beginning):
        """Waits for a message that begins so."""
        while (message := self.hear(SECONDS)) is not None:
            if message.startswith(beginning):
                return message
        return sys.exit(f"service: no {beginning}, but {self.said}")


def bring_vrf():
    """A network namespace that has its name when it is all set up."""
    for command in ("ip netns add other", "ip -n other link set lo up", "touch /run/netns/nsred",
                    "mount --bind /run/netns/other /run/netns/nsred"):
        expect(run(*command.split()).returncode == 0, command)


def reload():
    return run(*command_of("ExecReload"))


def follow(manager):
    waiting = run("directnet", "wait", "--vrf", "default", "--timeout", str(SECONDS))
    expect(waiting.returncode == 0, waiting.stderr)
    early = run("directnet", "wait", "--timeout", "1")
    expect("VRF red" in early.stderr, f"it waits for {early.stderr}")
    while manager.hear(0.01) is not None:
        pass
    expect("READY=1" not in manager.said, "READY before the routes of VRF red")

    bring_vrf()
    manager.until("READY=1")
    expect("127.0.0.0/8" in run("directnet", "tables", "--vrf", "red").stdout, "READY without routes")

    configure(virtual_ip("10.9.0.2/32"))
    good = reload()
    expect(good.returncode == 0 and "10.9.0.2~132/lo  true" in good.stdout, good)
    manager.until("RELOADING=1")
    manager.until("READY=1")
    configure('{\n"leaks": 1}')
    bad = reload()
    expect(bad.returncode == 1 and f"{CONFIG}:2:" in bad.stderr, bad)
    manager.until("READY=1")
    expect("10.9.0.2/32" in run("directnet", "show").stdout, "a bad reload has changed routes")


def main():
    configure(virtual_ip("10.9.0.1/32"))
    with open(OPTIONS, "w", encoding="utf-8") as options:
        options.write(f"DIRECTNET_OPTIONS=--config {CONFIG} --vrf red=nsred --ready-vrfs default,red\n")
    manager = Manager()
    with subprocess.Popen(command_of("ExecStart"),
                          env={**os.environ, "NOTIFY_SOCKET": "/run/notify"}) as service:
        try:
            follow(manager)
            service.send_signal(signal.SIGTERM)
            expect(service.wait(SECONDS) == 0, "it has not stopped cleanly")
            manager.until("STOPPING=1")
        finally:
            service.kill()
    os.remove(CONFIG)


main()
