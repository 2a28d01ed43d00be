"""Measures round trips between processes: starts a server and clients for each transport, all on
one processor, runs the rounds of all transports in turn, and prints Markdown tables.

The time of a round is the processor time of all that take part: server, clients, bus. On one
processor this is the time that passes when nothing else runs, and other work on the machine does
not count in. With --wall it is the time that passes.
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import tempfile

OURS = "this library"
LOGGED = "this library, log on"
ONCE = "this library, one flush per read"
JSON = "QLocalSocket, QJsonDocument"
JSON_LATER = "the same, sent by the event loop"
QTDBUS = "QtDBus"
SDBUS = "sd-bus"
REMOTE = "Qt Remote Objects"
RAW = "raw AF_UNIX"
PLAIN = "plain QLocalServer, the same values"
RAW_VALUES = "raw AF_UNIX, the same values"

# name: program, whether its address is the bus, options
TRANSPORTS = {
    OURS: ("roundtrip_wzr", False, []),
    LOGGED: ("roundtrip_wzr", False, ["log"]),
    ONCE: ("roundtrip_wzr", False, ["once"]),
    JSON: ("roundtrip_json", False, []),
    JSON_LATER: ("roundtrip_json", False, ["later"]),
    QTDBUS: ("roundtrip_qtdbus", True, []),
    SDBUS: ("roundtrip_sdbus", True, []),
    REMOTE: ("roundtrip_remoteobjects", False, []),
    RAW: ("roundtrip_raw", False, []),
    PLAIN: ("roundtrip_plain", False, []),
    RAW_VALUES: ("roundtrip_rawvalues", False, []),
}

# Who serves several connections, and who lets the connections of one process take turns.
ONE_CONNECTION = [RAW_VALUES]
TURNING = [OURS, ONCE, JSON, JSON_LATER, PLAIN]

# What is asked: one connection, all by a broadcast, or each in turn.
ONE, BROADCAST, TURNS = 0, 1, 2


class Round:
    """What is measured under one title."""

    def __init__(self, requests, in_flight, size, clients=1, connections=1, asked=ONE,
                 of_server=False):
        self.requests = requests  # of each client
        self.in_flight = in_flight
        self.size = size  # of an answer, bytes
        self.clients = clients
        self.connections = connections  # of each client
        self.asked = asked
        self.of_server = of_server  # its processor time alone: one client stands for many

    def fits(self, name):
        if self.of_server:
            return name in TURNING
        return name not in ONE_CONNECTION or self.clients * self.connections == 1


ROUNDS = {
    "1 in flight": Round(1000, 1, 500),
    "64 in flight": Round(3000, 64, 500),
    "8 clients": Round(250, 1, 500, clients=8),
    "1 KiB answers": Round(800, 1, 1 << 10),
    "64 KiB answers": Round(40, 1, 64 << 10),
    "256 KiB answers": Round(16, 1, 256 << 10),
    "1 MiB answers": Round(4, 1, 1 << 20),
    "16 MiB answers": Round(1, 1, 16 << 20),
    "broadcast to 50": Round(20, 1, 500, connections=50, asked=BROADCAST),
}
for count in (1, 10, 100, 1000):
    ROUNDS[f"server's time, 1 of {count} clients active"] = Round(
        1000, 1, 500, connections=count, of_server=True)
for count in (10, 100, 1000):
    ROUNDS[f"server's time, {count} active clients"] = Round(
        2000, 8, 500, connections=count, asked=TURNS, of_server=True)


class Process:
    """A program that speaks line by line over its standard input and output."""

    def __init__(self, command, errors):
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=errors, text=True)

    def line(self):
        line = self.process.stdout.readline().strip()
        if not line:
            raise SystemExit(f"{' '.join(self.process.args)}: ended, status {self.process.wait()}")
        return line

    def tell(self, text):
        self.process.stdin.write(text + "\n")
        self.process.stdin.flush()

    def end(self):
        self.process.stdin.close()
        try:
            self.process.wait(2)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


def processor_time(pid):
    """Nanoseconds that all threads of a process have run."""
    total = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        total += int((task / "schedstat").read_text().split()[0])
    return total


class Transport:
    def __init__(self, name, folder, programs, bus, bus_pid):
        program, over_bus, self.options = TRANSPORTS[name]
        self.program = programs / program
        self.folder = folder / program / "-".join(self.options or ["plain"])
        self.folder.mkdir(parents=True)
        self.errors = open(self.folder / "errors", "w+")
        self.address = bus if over_bus else str(self.folder / "socket")
        self.others = [bus_pid] if over_bus else []
        self.clients = {}  # (clients, connections): processes
        self.server = self.start("server", 0)

    def start(self, role, connections):
        options = [f"log={self.folder / role}" if o == "log" else o for o in self.options]
        process = Process([str(self.program), role, self.address, str(connections), *options],
                          self.errors)
        if process.line() != "ready":
            raise SystemExit(f"{self.program.name}: no {role}")
        return process

    def clients_for(self, count, connections):
        """Kept and shared by all rounds: one process has one connection, another has 50."""
        known = self.clients.setdefault(connections, [])
        while len(known) < count:
            known.append(self.start("client", connections))
        return known[:count]

    def run(self, wall, what):
        """Nanoseconds for one request or broadcast."""
        processes = self.clients_for(what.clients, what.connections)
        pids = [self.server.process.pid]
        if not what.of_server:
            pids += [p.process.pid for p in processes] + self.others
        used = sum(map(processor_time, pids))
        for process in processes:
            process.tell(f"{what.requests} {what.in_flight} {what.size} {what.asked}")
        times = [tuple(map(int, process.line().split())) for process in processes]
        used = sum(map(processor_time, pids)) - used
        for log in self.folder.glob("*er*_*"):  # the logs would fill the disk
            os.truncate(log, 0)
        begin, end = min(t[0] for t in times), max(t[1] for t in times)
        return (end - begin if wall else used) / (what.requests * what.clients)

    def stop_clients(self, connections):
        for process in self.clients.pop(connections, []):
            process.end()

    def end(self):
        for connections in list(self.clients):
            self.stop_clients(connections)
        self.server.end()


def start_bus():
    bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                           stdout=subprocess.PIPE, text=True)
    return bus, bus.stdout.readline().strip()


def shown(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def print_table(title, times):
    medians = {name: statistics.median(values) for name, values in times.items()}
    print(f"\n**{title}**, time for each\n")
    print("| transport | median | quartiles | this library : it | times as many per second as "
          f"{JSON} |")
    print("|---|---|---|---|---|")
    for name, values in times.items():
        quartiles = statistics.quantiles(values, n=4) if len(values) > 1 else values * 3
        of_json = f"{medians[JSON] / medians[name]:.2f}" if JSON in medians else ""
        of_ours = f"{medians[OURS] / medians[name]:.2f}" if OURS in medians else ""
        print(f"| {name} | {shown(medians[name])} | {shown(quartiles[0])} to "
              f"{shown(quartiles[2])} | {of_ours} | {of_json} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", type=pathlib.Path, required=True)
    parser.add_argument("--cpu", type=int, default=0)
    parser.add_argument("--repetitions", type=int, default=9)
    parser.add_argument("--only", default="", help="rounds whose title contains this")
    parser.add_argument("--transports", default="", help="names, separated by ';'")
    parser.add_argument("--wall", action="store_true", help="take the time that passes")
    options = parser.parse_args()
    os.sched_setaffinity(0, {options.cpu})
    names = [n for n in TRANSPORTS if not options.transports or n in options.transports.split(";")]
    folder = pathlib.Path(tempfile.mkdtemp(prefix="roundtrip"))
    bus, address = start_bus()
    transports = {}
    try:
        for name in names:
            if (options.bin / TRANSPORTS[name][0]).exists():
                transports[name] = Transport(name, folder, options.bin, address,
                                             bus.pid)
            else:
                print(f"{name}: not built, its packages are missing")
        for title, what in ROUNDS.items():
            if options.only not in title:
                continue
            times = {name: [] for name in transports if what.fits(name)}
            for repetition in range(-1, options.repetitions):
                for name, values in times.items():
                    time = transports[name].run(options.wall, what)
                    if repetition >= 0:  # the one before warms up
                        values.append(time)
            if what.of_server:  # no other round is to have so many clients
                for name in times:
                    transports[name].stop_clients(what.connections)
            print_table(title, times)
    except BaseException:
        for errors in folder.glob("*/*/errors"):
            if errors.stat().st_size:
                print(f"{errors.parent.parent.name}: {errors.read_text()[-2000:]}")
        raise
    finally:
        for transport in transports.values():
            transport.end()
        bus.terminate()
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
