"""The syslog servers that bench/peers_service.py measures: how each is set up, started and ended."""

import contextlib
import ctypes
import glob
import os
import random
import shutil
import signal
import socket
import subprocess
import sys
import time

PATIENCE = 20
LIBRARIES = "usr/lib/x86_64-linux-gnu"
NAMES = ["quorbel", "rsyslog", "rsyslog-tuned", "syslog-ng", "syslog-ng-tuned"]

# Inputs as the manual shows them, what is not said is at its default.
RSYSLOG = """\
global(workDirectory="{folder}" defaultNetstreamDriverCAFile="{tls}/cert.pem"
       defaultNetstreamDriverCertFile="{tls}/cert.pem" defaultNetstreamDriverKeyFile="{tls}/key.pem")
{queue}module(load="imudp")
module(load="imtcp")
input(type="imudp" address="127.0.0.1" port="{port}"{buffer})
input(type="imtcp" address="127.0.0.1" port="{port}")
input(type="imtcp" address="127.0.0.1" port="{tls_port}"
      streamDriver.name="ossl" streamDriver.mode="1" streamDriver.authMode="anon")
action(type="omfile" file="{folder}/out/all.log")
"""
RSYSLOG_TUNED = {"queue": 'main_queue(queue.size="500000" queue.dequeueBatchSize="4096")\n',
                 "buffer": ' rcvbufSize="32m"'}

# The options are those of Debian's syslog-ng.conf, as far as they concern this.
SYSLOG_NG = """\
@version: 3.38
options {{ chain_hostnames(off); flush_lines({flush}); use_dns(no); use_fqdn(no); dns_cache(no); stats_freq(0); }};
source s_net {{
  network(ip(127.0.0.1) port({port}) transport("udp"){buffer});
  network(ip(127.0.0.1) port({port}) transport("tcp"){window});
  network(ip(127.0.0.1) port({tls_port}) transport("tls"){window}
    tls(key-file("{tls}/key.pem") cert-file("{tls}/cert.pem") peer-verify(optional-untrusted)));
}};
destination d_file {{ file("{folder}/out/all.log"{fifo}); }};
log {{ source(s_net); destination(d_file); }};
"""
SYSLOG_NG_TUNED = {"flush": 1000, "buffer": " so-rcvbuf(33554432) log-iw-size(100000)",
                   "window": " log-iw-size(100000) log-fetch-limit(1000)", "fifo": " log-fifo-size(1000000)"}


def die_with_parent():
    """In the child: whatever becomes of this program, its children end."""
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"Waited in vain: {what}")
        time.sleep(0.01)


def free_port():
    """A port that neither a stream nor a datagram socket has, and that the system gives to nobody who asks for any."""
    for _ in range(100):
        address = ("127.0.0.1", random.randrange(10_000, 32_000))
        with socket.socket() as stream, socket.socket(type=socket.SOCK_DGRAM) as datagrams:
            with contextlib.suppress(OSError):
                stream.bind(address)
                datagrams.bind(address)
                return address[1]
    return sys.exit("No port is free.")


def is_listening(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


def make_identity(folder):
    os.makedirs(folder, exist_ok=True)
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=localhost",
                    "-keyout", f"{folder}/key.pem", "-out", f"{folder}/cert.pem"], check=True, capture_output=True)


class Server:
    """One of NAMES, running, with its files in a folder of its own. Use it as a context: it is ended then."""

    def __init__(self, name, build, folder, identity):
        self.folder, self.build = folder, build
        self.output = f"{folder}/out"
        os.makedirs(self.output)
        self.port, self.tls_port = free_port(), free_port()
        # Where Quorbel looks for its identity.
        shutil.copytree(identity, f"{self.output}/tls")
        command, environment = getattr(self, name.split("-tuned")[0].replace("-", "_"))(name.endswith("-tuned"))
        with open(f"{folder}/said", "wb") as said:
            self.process = subprocess.Popen(command, env=os.environ | environment, stdout=said, stderr=said,
                                            preexec_fn=die_with_parent)
        try:
            wait_until(lambda: self.process.poll() is not None or
                       (is_listening(self.port) and is_listening(self.tls_port)), f"{name} starts")
            if self.process.poll() is not None:
                sys.exit(f"{name} does not start: {self.said()}")
        except BaseException:
            self.end()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def quorbel(self, _):
        return ([f"{self.build}/release/src/service/QuorbelSrv", "--port", str(self.port), "--tls-port",
                 str(self.tls_port), "--config", f"{self.folder}/quorbelsrv.conf"],
                {"QUORBEL_LIBRARY": self.output, "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent"})

    def rsyslog(self, tuned):
        packages = f"{self.build}/syslog-tools"
        file = self.configure(RSYSLOG, RSYSLOG_TUNED if tuned else {"queue": "", "buffer": ""})
        return ([f"{packages}/usr/sbin/rsyslogd", "-n", "-f", file, "-i", f"{self.folder}/pid", "-M",
                 f"{packages}/{LIBRARIES}/rsyslog"], {"LD_LIBRARY_PATH": f"{packages}/{LIBRARIES}"})

    def syslog_ng(self, tuned):
        packages = f"{self.build}/syslog-ng"
        file = self.configure(SYSLOG_NG, SYSLOG_NG_TUNED if tuned else
                              {"flush": 0, "buffer": "", "window": "", "fifo": ""})
        own = [f"--{option}={self.folder}/{option}" for option in ("persist-file", "pidfile", "control")]
        modules = glob.glob(f"{packages}/usr/lib/syslog-ng/3.*")[0]
        return ([f"{packages}/usr/sbin/syslog-ng", "-F", "--no-caps", "-f", file, f"--module-path={modules}", *own],
                {"SYSLOGNG_PREFIX": f"{packages}/usr",
                 "LD_LIBRARY_PATH": f"{packages}/usr/lib/syslog-ng:{packages}/{LIBRARIES}"})

    def configure(self, template, options):
        text = template.format(folder=self.folder, port=self.port, tls_port=self.tls_port, tls=f"{self.output}/tls",
                               **options)
        with open(f"{self.folder}/conf", "w", encoding="ascii") as file:
            file.write(text)
        return file.name

    def said(self):
        with open(f"{self.folder}/said", encoding="utf-8", errors="replace") as said:
            return said.read()[-2000:]

    def files(self):
        return glob.glob(f"{self.output}/*.log")

    def size(self):
        return sum(map(os.path.getsize, self.files()))

    def processor_seconds(self):
        """Of all its threads."""
        return time.clock_gettime((~self.process.pid << 3) | 2)

    def peak_memory(self):
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmHWM:")) * 1024

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    def end(self):
        self.process.terminate()
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.kill()
