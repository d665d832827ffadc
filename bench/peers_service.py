"""What bench/peers_service does: one table of the service, rsyslog and syslog-ng, from one run.

The servers take turns in each round; medians are printed. Each writes what it gets to one place on disk. The sender is
the same (quorbel-load, for TLS openssl's client), the messages have 100 bytes. Measured are:
  flat out  messages a second in the file, from the first that is sent until the file grows no more; one sender, or four
  lost      over UDP, what was sent and is not in the file then: the sender does not wait for anybody
  time      processor time of the server for each message in the file, at 17,000 a second and flat out over TCP
  memory    the most that it took while all of these came
  delay     from sending one message over UDP until it can be read in the file, beside 17,000 a second over UDP
  killed    SIGKILL amid a flood over TCP: how many that the sender's socket had taken are not in the file
"""

import glob
import os
import platform
import re
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time

from peers_programs import NAMES, RSYSLOG, RSYSLOG_TUNED, SYSLOG_NG, SYSLOG_NG_TUNED, Server, die_with_parent, \
    make_identity, wait_until

MESSAGE = re.compile(rb"quorbel-load\[(\d+)\]: (\d{10}) [^\n]*\.\r?\n")
QUIET = 17000
STILL = 1.0  # seconds without growth, after which nothing more is expected
USAGE = f"Usage: bench/peers_service [--quick] [NAME...], NAME one of {', '.join(NAMES)}"


def stored(server):
    """The messages in its files, each counted once."""
    found = set()
    for path in server.files():
        with open(path, "rb") as file:
            found.update((match[1], match[2]) for match in MESSAGE.finditer(file.read()))
    return len(found)


def start(command, **places):
    return subprocess.Popen(command, preexec_fn=die_with_parent, stderr=subprocess.DEVNULL, **places)


class Bench:
    def __init__(self, build, scratch, quick):
        self.build, self.scratch = build, scratch
        self.load = f"{build}/release/tests/load/quorbel-load"
        self.rounds = 1 if quick else 3
        self.flood = 100_000 if quick else 200_000
        self.seconds = 2 if quick else 3
        self.frames = {}
        self.identity = f"{scratch}/tls"
        make_identity(self.identity)

    def send(self, server, run, count, *options):
        return start([self.load, "send", "--port", str(server.port), "--run", str(run), "--count", str(count),
                      *options], stdout=subprocess.PIPE, text=True)

    def send_tls(self, server, run, count):
        with open(self.frames[run, count], "rb") as frames:
            return start(["openssl", "s_client", "-connect", f"127.0.0.1:{server.tls_port}", "-quiet", "-no_ign_eof",
                          "-nocommands"], stdin=frames, stdout=subprocess.DEVNULL)

    def begin(self, server, way, run, count, rate):
        if way == "TLS":
            return self.send_tls(server, run, count)
        # A rate that is never reached keeps the kernel from joining datagrams, which usual senders do not do.
        options = ["--rate", str(rate or 10_000_000)] if way == "UDP" or rate else []
        return self.send(server, run, count, *options, *(["--tcp"] if way == "TCP" else []))

    def store(self, server, way, senders, rate=0, count=0):
        """Messages a second, the share that is lost, and microseconds of the processor for each."""
        each = (count or self.flood) // senders
        for run in range(senders if way == "TLS" else 0):
            self.make_frames(run, each)
        before, began = server.processor_seconds(), time.monotonic()
        running = [self.begin(server, way, run, each, rate) for run in range(senders)]
        last, size = began, server.size()
        while any(one.poll() is None for one in running) or time.monotonic() - last < STILL:
            if server.size() != size:
                last, size = time.monotonic(), server.size()
            time.sleep(0.005)
        count = stored(server)
        used = server.processor_seconds() - before
        return count / (last - began), 1 - count / (each * senders), used / max(count, 1) * 1e6

    def make_frames(self, run, count):
        """Before they are sent: what makes them is not to be measured."""
        if (run, count) in self.frames:
            return
        path = f"{self.scratch}/frames-{run}-{count}"
        with open(path, "wb") as file:
            subprocess.run([self.load, "print", "--run", str(run), "--count", str(count)], stdout=file, check=True)
        self.frames[run, count] = path

    def delays(self, server):
        """Milliseconds of each probe."""
        flood = self.send(server, 1, QUIET * self.seconds, "--rate", str(QUIET))
        wait_until(lambda: server.size() > 0, "the flood arrives")
        sent, seen = {}, {}
        reader = threading.Thread(target=follow, args=(server, flood, seen), daemon=True)
        reader.start()
        with socket.socket(type=socket.SOCK_DGRAM) as probe:
            while flood.poll() is None:
                number = len(sent)
                sent[number] = time.monotonic()
                probe.sendto(f"<134>Nov 21 08:00:00 sender1 probe[1]: {number:06} end.".encode(),
                             ("127.0.0.1", server.port))
                time.sleep(0.02)
        reader.join()
        return [(seen[number] - sent[number]) * 1e3 for number in sent if number in seen], len(sent) - len(seen)

    def killed(self, server, *options):
        """How many the socket took, and how many of these are not in the file."""
        sender = self.send(server, 1, 50_000_000, "--tcp", *options)
        wait_until(lambda: server.size() > 0, "the stream arrives")
        time.sleep(0.5)
        server.kill()
        said = sender.communicate()[0]
        taken = int(re.match(r"sent (\d+)", said)[1])
        return taken, taken - stored(server)

    def measure(self, name):
        figures = {}

        def with_server(work, *arguments, **options):
            folder = tempfile.mkdtemp(dir=self.scratch)
            try:
                with Server(name, self.build, folder, self.identity) as server:
                    result = work(server, *arguments, **options)
                    if server.process.poll() is None:
                        figures["memory"] = max(figures.get("memory", 0), server.peak_memory() / 2**20)
                    return result
            finally:
                shutil.rmtree(folder)

        for way in ("UDP", "TCP", "TLS"):
            for senders in (1, 4):
                rate, lost, used = with_server(self.store, way, senders)
                figures[f"{way} {senders}"] = rate
                figures[f"{way} {senders} lost"] = lost * 100
                figures[f"{way} {senders} time"] = used
        for way in ("UDP", "TCP"):
            _, lost, used = with_server(self.store, way, 1, rate=QUIET, count=QUIET * self.seconds)
            figures[f"{way} quiet time"], figures[f"{way} quiet lost"] = used, lost * 100
        delays, missing = with_server(self.delays)
        figures["delay"] = statistics.median(delays)
        figures["delay 99"] = sorted(delays)[int(len(delays) * 0.99)]
        figures["probes lost"] = missing
        figures["killed taken"], figures["killed"] = with_server(self.killed)
        _, figures["killed quiet"] = with_server(self.killed, "--rate", str(QUIET))
        return figures


def follow(server, flood, seen):
    """Notes when each probe can be read, until nothing comes any more."""
    positions, rest, ended = {}, {}, None
    while ended is None or time.monotonic() - ended < STILL:
        if ended is None and flood.poll() is not None:
            ended = time.monotonic()
        for path in server.files():
            with open(path, "rb") as file:
                file.seek(positions.get(path, 0))
                data = rest.get(path, b"") + file.read()
                now = time.monotonic()
                positions[path] = file.tell()
            for match in re.finditer(rb"probe\[1\]: (\d{6}) end\.", data):
                seen.setdefault(int(match[1]), now)
            rest[path] = data[-200:]
        time.sleep(0.0005)


ROWS = [(f"{way} flat out, {who}", f"{way} {senders}", "{:,.0f}/s")
        for way in ("UDP", "TCP", "TLS") for senders, who in ((1, "one sender"), (4, "four senders"))]
ROWS += [(f"lost, {way}, {who}", f"{way} {senders} lost", "{:.1f} %")
         for way in ("UDP", "TCP", "TLS") for senders, who in ((1, "one sender"), (4, "four senders"))]
ROWS += [("time a message, UDP flat out", "UDP 1 time", "{:.2f} µs"),
         ("time a message, TCP flat out", "TCP 1 time", "{:.2f} µs"),
         ("time a message, TLS flat out", "TLS 1 time", "{:.2f} µs"),
         ("time a message, UDP, 17,000/s", "UDP quiet time", "{:.2f} µs"),
         ("time a message, TCP, 17,000/s", "TCP quiet time", "{:.2f} µs"),
         ("lost, UDP, 17,000/s", "UDP quiet lost", "{:.2f} %"),
         ("most memory", "memory", "{:.0f} MiB"),
         ("delay, median", "delay", "{:.2f} ms"), ("delay, 99 %", "delay 99", "{:.2f} ms"),
         ("probes lost", "probes lost", "{:.0f}"),
         ("killed flat out: taken by the socket", "killed taken", "{:,.0f}"),
         ("of these not in the file", "killed", "{:,.0f}"),
         ("killed at 17,000/s: not in the file", "killed quiet", "{:,.0f}")]


def version(build, name):
    return os.path.basename(glob.glob(f"{build}/*/packages/{name}_*.deb")[0])


def tell_setup(build):
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        cpu = re.search(r"model name\s*: (.*)", info.read())
    print(f"{time.strftime('%Y-%m-%d %H:%M')}, {platform.machine()}, {os.cpu_count()} cores, "
          f"{cpu[1] if cpu else 'unknown processor'}, Linux {platform.release()}, load {os.getloadavg()[0]:.1f}")
    print("quorbel: QuorbelSrv --port N --tls-port N, no configuration, no bus")
    for name, text, tuned in (("rsyslog", RSYSLOG, RSYSLOG_TUNED), ("syslog-ng", SYSLOG_NG, SYSLOG_NG_TUNED)):
        print(f"{version(build, 'syslog-ng-core' if name == 'syslog-ng' else name)}\n{text}{name}-tuned adds: {tuned}")


def tell_table(rounds):
    names, done = list(rounds), len(rounds[list(rounds)[0]])
    print(f"\nMedians of {done} rounds, load {os.getloadavg()[0]:.1f}")
    print("| |" + "|".join(f" {name} " for name in names) + "|\n|" + "---|" * (len(names) + 1))
    for title, key, form in ROWS:
        cells = [form.format(statistics.median(one[key] for one in rounds[name])) for name in names]
        print(f"| {title} | " + " | ".join(cells) + " |", flush=True)


def arguments(values):
    quick = "--quick" in values
    names = [value for value in values if value != "--quick"]
    if any(name not in NAMES for name in names):
        sys.exit(USAGE)
    return quick, names or NAMES


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(130))
    if sys.argv[1:2] == ["--check"]:
        arguments(sys.argv[2:])
        return
    build, scratch = sys.argv[-2:]
    quick, names = arguments(sys.argv[1:-2])
    tell_setup(build)
    bench = Bench(build, scratch, quick)
    rounds = {name: [] for name in names}
    for number in range(bench.rounds):
        for name in names:
            print(f"round {number + 1}: {name}, load {os.getloadavg()[0]:.1f}", file=sys.stderr, flush=True)
            rounds[name].append(bench.measure(name))
        tell_table(rounds)


main()
