"""What bench/peers does: makes the logs, starts the programs, reads their screens."""

import datetime
import os
import pty
import random
import re
import select
import signal
import statistics
import subprocess
import sys
import termios
import time

VIEWER, SCRATCH, LINES = sys.argv[1], sys.argv[2], int(sys.argv[3])
ROUNDS = 3
NEEDLE, MARKER = "needle-7f3a", "marker-91c2"
START = 1767225600
SPACING = 0.04
PRIORITIES = [("Local7.Informational", 6), ("Authpriv.Notice", 5), ("Kern.Warning", 4), ("Local0.Debug", 7),
              ("Local7.Error", 3), ("Daemon.Critical", 2)]
MESSAGES = ["kernel: [{}.{}] eth0: link is up, 1000 Mbps full duplex, flow control rx/tx",
            "sshd[{}]: Accepted publickey for operator from 10.20.{}.7 port 52144 ssh2",
            "dhcpd: DHCPACK on 10.8.{}.{} to 00:1b:21:3c:9d:f8 via vlan120",
            "systemd[1]: session-{}.scope: Deactivated successfully after {} ms",
            "named[812]: client @0x7f{:08x} 10.4.2.9#{}: query (cache) denied"]
ESCAPES = re.compile(rb"\x1b(\[[0-9;?]*[ -/]*[@-~]|\][^\x07]*\x07|[()][A-Z0-9]|[=>78M])|[\x00-\x08\x0e-\x1f]")
PATIENCE = 180


def events():
    chance = random.Random(1)
    for number in range(LINES):
        priority, severity = PRIORITIES[number % len(PRIORITIES)]
        message = MESSAGES[chance.randrange(len(MESSAGES))].format(chance.randrange(250), chance.randrange(100000))
        if number == LINES // 2:
            message = f"app: {NEEDLE} {MARKER}"
        if number == 0:
            message = "app: the-very-first"
        if number == LINES - 1:
            message = "app: the-very-last"
        host = f"10.{chance.randrange(3)}.{chance.randrange(250)}.{chance.randrange(17)}"
        yield START + number * SPACING, priority, severity, host, message


def make_logs():
    """Quorbel's, the usual one of syslog servers, and a journal."""
    os.makedirs(f"{SCRATCH}/library")
    names = {name: f"{SCRATCH}/{file}" for name, file in
             (("quorbel", "library/sample.log"), ("syslog", "syslog"), ("journal", "journal"))}
    os.makedirs(names["journal"])
    remote = next(path for path in ("/usr/lib/systemd/systemd-journal-remote", "/lib/systemd/systemd-journal-remote")
                  if os.path.exists(path))
    journal = subprocess.Popen([remote, "-o", f"{names['journal']}/remote.journal", "-"], stdin=subprocess.PIPE,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, text=True)
    with open(names["quorbel"], "w", newline="") as quorbel, open(names["syslog"], "w") as syslog:
        for at, priority, severity, host, message in events():
            quorbel.write(f"{int(at)},{priority},{host},{message}\r\n")
            moment = datetime.datetime.fromtimestamp(at, datetime.timezone.utc)
            syslog.write(f"{moment.isoformat(timespec='microseconds')} {host} {message}\n")
            journal.stdin.write(f"__REALTIME_TIMESTAMP={int(at * 1e6)}\n_BOOT_ID={1:032x}\n_HOSTNAME={host}\n"
                                f"PRIORITY={severity}\nMESSAGE={message}\n\n")
    journal.stdin.close()
    if journal.wait() != 0:
        sys.exit("The journal could not be made.")
    for name, place in names.items():
        files = [place] if os.path.isfile(place) else [f"{place}/{file}" for file in os.listdir(place)]
        print(f"{name}: {sum(map(os.path.getsize, files)) / 2**20:.0f} MiB", flush=True)
        for file in files:
            with open(file, "rb") as source:  # all begin with a warm page cache
                while source.read(1 << 24):
                    pass
    return names


def own_memory(pid):
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as rollup:
        return int(re.search(r"^Pss:\s+(\d+)", rollup.read(), re.M)[1]) * 1024


class Terminal:
    """A program in a terminal, and all that it has written since it was asked something."""

    def __init__(self, command):
        self.seen = b""
        self.begun = time.monotonic()
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.environ.update(TERM="xterm-256color", COLUMNS="120", LINES="40")
            os.execvp(command[0], command)
        termios.tcsetwinsize(self.fd, (40, 120))

    def ask(self, keys):
        self.seen = b""
        os.write(self.fd, keys.encode())
        self.begun = time.monotonic()

    def wait_for(self, text):
        """Seconds until the screen has shown the text."""
        while text.encode() not in ESCAPES.sub(b"", self.seen):
            if time.monotonic() - self.begun > PATIENCE:
                sys.exit(f"{text} is not shown: {ESCAPES.sub(b'', self.seen)[-400:]!r}")
            if select.select([self.fd], [], [], 0.5)[0]:
                self.seen += os.read(self.fd, 1 << 16)

        return time.monotonic() - self.begun

    def end(self):
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)
        os.close(self.fd)


def in_terminal(command, first, search, filtered):
    terminal = Terminal(command)
    figures = {"first": terminal.wait_for(first)}
    terminal.ask(search)
    figures["found"] = terminal.wait_for(MARKER)
    figures["memory"] = own_memory(terminal.pid)
    terminal.end()
    terminal = Terminal(command)
    terminal.wait_for(first)
    terminal.ask(filtered)
    figures["filtered"] = terminal.wait_for(MARKER)
    terminal.end()
    return figures


def lnav(names):
    return in_terminal(["lnav", names["syslog"]], "the-very-last",
                       f"/{NEEDLE}\n", f":filter-in {NEEDLE}\n")


def less(names):
    return in_terminal(["less", names["syslog"]], "the-very-first", f"/{NEEDLE}\n", f"&{NEEDLE}\n")


def journalctl(names):
    def run(*arguments):
        begun = time.monotonic()
        process = subprocess.Popen(["journalctl", "--no-pager", "-q", "--directory", names["journal"], *arguments],
                                   stdout=subprocess.PIPE, text=True)
        line = process.stdout.readline()
        shown = time.monotonic() - begun
        process.stdout.read()
        _, status, usage = os.wait4(process.pid, 0)
        return shown, line, usage.ru_maxrss * 1024
    first, line, _ = run("-n", "40")
    found, found_line, memory = run("--grep", NEEDLE, "-n", "40")
    if not line or MARKER not in found_line:
        sys.exit(f"journalctl shows something else: {line} {found_line}")
    return {"first": first, "found": found, "filtered": found, "memory": memory}


def quorbel(_):
    begun = time.monotonic()
    told = subprocess.run([VIEWER, f"{SCRATCH}/library", NEEDLE, str(begun)], check=True, capture_output=True,
                          text=True).stdout
    figures = {name: float(value) for name, value in (line.split() for line in told.splitlines())}
    if figures["events"] != LINES:
        sys.exit(f"The window shows {figures['events']:.0f} events.")
    return {"first": figures["first-row"], "whole": figures["all-rows"], "found": figures["found"],
            "filtered": figures["found"], "memory": figures["resident"], "later": figures["resident-later"]}


def main():
    names = make_logs()
    programs = {"Quorbel": quorbel, "lnav": lnav, "less": less, "journalctl": journalctl}
    rounds = {name: [] for name in programs}
    for _ in range(ROUNDS):
        for name, measure in programs.items():
            rounds[name].append(measure(names))
    columns = ["first", "whole", "found", "filtered", "memory", "later"]
    print(f"{'':12}" + "".join(f"{column:>12}" for column in columns))
    for name, figures in rounds.items():
        cells = []
        for column in columns:
            values = [one[column] for one in figures if column in one]
            unit = 2**20 if column in ("memory", "later") else 1
            form = "{:.0f} MiB" if unit > 1 else "{:.3f} s"
            cells.append(form.format(statistics.median(values) / unit) if values else "–")
        print(f"{name:12}" + "".join(f"{cell:>12}" for cell in cells), flush=True)


main()
