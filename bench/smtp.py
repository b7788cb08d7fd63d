"""Sending over SMTP against pooled nodemailer, libcurl and smtp-source, every case in one run.

Each message is composed for its recipient as HTML and text (smtp-source composes nothing). The server is bench_smtp_sink,
which takes everything and keeps nothing; for the distant line it holds each direction for 20 ms, for the server that
thinks it answers 1 ms late. A rate is messages by the time that the sender's process took, start and end included. Ends
with 1 where an aim is missed.

  bench/run smtp [--rounds N] [--scale F] [--only WORDS] [--against PROGRAM]

--against: another build of ours, in turn with this one, over one connection in each of its ways.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

import aims
import letter
import postfix

BIN = Path("build/bench/bin")
PROGRAM = BIN / "quillcast"
BENCH = Path(__file__).parent
ONE_CORE = ["taskset", "-c", "0"]
WITHOUT_CHUNKING = "PIPELINING,8BITMIME,SIZE 0,DSN,ENHANCEDSTATUSCODES"
WITH_CHUNKING = WITHOUT_CHUNKING + ",CHUNKING"
ROUND_TRIP = 0.040
MOST_MIB = 65  # of one connection, however many recipients


class Sink:
    """The server; after `with` its counts are in `told`, a connection each."""

    def __init__(self, offer, pin, hold=0, tls=None, late=0):
        command = [*pin, BIN / "bench_smtp_sink", "--offer", offer, "--hold", str(hold), "--late", str(late),
                   *(["--tls", *tls] if tls else [])]
        self.process = subprocess.Popen(list(map(str, command)), stdout=subprocess.PIPE, text=True)
        self.port = int(self.process.stdout.readline())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        time.sleep(0.2)
        self.process.terminate()
        self.told = [json.loads(line) for line in self.process.communicate()[0].splitlines()]

    def messages(self):
        return sum(connection["messages"] for connection in self.told)


def timed(command, environment=None):
    """Seconds, processor seconds, peak MiB of one process and its end."""
    start = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, env=environment)
    words = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    seconds = time.perf_counter() - start
    if process.returncode != 0:
        raise SystemExit(f"{command[0]} failed: {words.decode()[-2000:]}")
    return {"seconds": seconds, "processor": usage.ru_utime + usage.ru_stime, "mib": usage.ru_maxrss / 1024}


class Cores:
    """How busy each core is, of all that runs, while messages go out: from the server's first work to its last."""

    EDGE = 0.03  # seconds of the server's processor time at both ends that are left out

    def __init__(self, server):
        self.server, self.samples, self.ended = server, [], threading.Event()
        self.thread = threading.Thread(target=self.watch)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.ended.set()
        self.thread.join()

    def watch(self):
        while not self.ended.wait(0.02):
            ticks = Path(f"/proc/{self.server}/stat").read_text().rsplit(")", 1)[1].split()[11:13]
            worked = sum(map(int, ticks)) / os.sysconf("SC_CLK_TCK")
            cores = [list(map(int, line.split()[1:])) for line in Path("/proc/stat").read_text().splitlines()
                     if line.startswith("cpu") and line[3].isdigit()]
            self.samples.append((worked, [(sum(times), times[3] + times[4]) for times in cores]))

    def busy(self):
        """A share for each core, the least busy first."""
        least, most = (self.samples[end][0] + edge for end, edge in ((0, self.EDGE), (-1, -self.EDGE)))
        sending = [cores for worked, cores in self.samples if least < worked < most]
        if len(sending) < 2:
            raise SystemExit("too few messages to tell how busy the cores are")
        return sorted(1 - (idle - before_idle) / (all_ - before)
                      for (before, before_idle), (all_, idle) in zip(sending[0], sending[-1]))


class Senders:
    def __init__(self, folder):
        self.folder = Path(folder)
        self.texts = []
        self.long_letter = self.folder / "long.html"
        self.long_letter.write_text(letter.LONG_HTML)
        for name, body in (("letter.txt", letter.SHORT_TEXT), ("letter.html", letter.SHORT_HTML)):
            (self.folder / name).write_text(body)
            self.texts.append(self.folder / name)
        self.attachments = {}
        self.profiles = {}
        peers = Path("build/bench/peers")
        shutil.copytree(BENCH / "peers", peers, dirs_exist_ok=True)
        subprocess.run(["npm", "ci", "--silent"], cwd=peers, check=True)
        self.node = dict(os.environ, NODE_PATH=str((peers / "node_modules").resolve()))
        self.postfix, self.postfix_environment = postfix.unpack(folder)
        self.certificate = self.folder / "sink.pem", self.folder / "sink.key"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=sink.example", "-addext",
                        "subjectAltName=IP:127.0.0.1", "-days", "2", "-out", self.certificate[0], "-keyout",
                        self.certificate[1]], check=True, capture_output=True)

    def attachment(self, kib):
        if kib not in self.attachments:
            self.attachments[kib] = self.folder / f"paper-{kib}.bin"
            # Piece by piece: what this process holds at its peak counts as the peak of those that it starts.
            with self.attachments[kib].open("wb") as file:
                for _ in range(kib):
                    file.write(os.urandom(1024))
        return self.attachments[kib]

    def profile(self, count):
        """A profile with a group of so many people."""
        if count not in self.profiles:
            profile = self.folder / f"profile-{count}"
            people = self.folder / "people.csv"
            with people.open("w") as file:
                for number in range(1, count + 1):
                    file.write(f"user{number}@example.org,Ada{number % 1000},Lovelace,Köln,Analytical Engines\n")
            self.quillcast(profile, "account", "set", "Name=Ada", "Email=ada@example.org", "Server=127.0.0.1", "Port=25",
                           "CharSet=Unicode (UTF-8)")
            self.quillcast(profile, "group", "new", "All")
            self.quillcast(profile, "import", people, "--group", "All", "--opt-in", "--map",
                           "Email Address=1,First Name=2,Last Name=3,City=4,Company=5")
            self.profiles[count] = profile
        return self.profiles[count]

    def quillcast(self, profile, *arguments):
        subprocess.run([PROGRAM, "--profile", profile, "--yes", "--quiet", *map(str, arguments)], check=True,
                       stdout=subprocess.DEVNULL)

    def ours(self, port, count, pin, pipeline=1, attachment=0, tls=False, connections=1, program=None, body=None):
        profile = self.profile(count)
        self.quillcast(profile, "account", "set", f"Port={port}", f"Pipeline={pipeline}",
                       f"Security={'TLS' if tls else 'None'}")
        extra = ["--attach", self.attachment(attachment)] if attachment else []
        extra += ["--connections", connections] if connections > 1 else []
        environment = dict(os.environ, SSL_CERT_FILE=str(self.certificate[0])) if tls else None
        return timed([*pin, program or PROGRAM, "--profile", profile, "--yes", "--quiet", "send", "--group", "All", "--subject",
                      letter.SUBJECT, "--body", body or self.texts[1], *extra], environment)

    def nodemailer(self, port, count, pin, connections=1, attachment=0):
        extra = [self.attachment(attachment)] if attachment else []
        return timed([*pin, "node", BENCH / "smtp_nodemailer.js", port, connections, count, *self.texts, letter.SUBJECT,
                      *extra], self.node)

    def libcurl(self, port, count, pin):
        return timed([*pin, BIN / "bench_smtp_curl", f"smtp://127.0.0.1:{port}/", count, *self.texts, letter.SUBJECT])

    def smtp_source(self, port, count, pin):
        return timed([*pin, Path(self.postfix) / "smtp-source", "-d", "-s", 1, "-m", count, "-l", letter.SHORT_OCTETS, "-f",
                      "ada@example.org", "-t", "user@example.org", f"127.0.0.1:{port}"], self.postfix_environment)


class Case:
    """One sender against one sink, some rounds; keeps the median rate and the worst of the rest."""

    def __init__(self, rounds, scale):
        self.rounds, self.scale = rounds, scale

    def run(self, send, count, offer, pin=(), hold=0, tls=None, late=0, **options):
        count = max(10, int(count * self.scale))
        results = []
        for _ in range(self.rounds):
            with Sink(offer, pin, hold, tls, late) as sink:
                result = send(sink.port, count, pin, **options, **({"tls": True} if tls else {}))
            if sink.messages() != count:
                raise SystemExit(f"the sink was handed {sink.messages()} of {count} messages")
            result["rate"] = count / result["seconds"]
            result["processor"] *= 1000 / count
            result["reads"] = sum(connection["reads"] for connection in sink.told) / count
            results.append(result)
        out = {name: statistics.median(result[name] for result in results) for name in ("rate", "processor", "reads")}
        out["mib"] = max(result["mib"] for result in results)
        return out


def row(words, us, *comparisons, most_mib=None):
    """`comparisons`: (name, their rate, factor to reach)."""
    parts = []
    for name, rate, aim in comparisons:
        ratio = us["rate"] / rate
        parts.append(f"{ratio:.2f} x {name} ({rate:,.1f}/s){aims.at_least(f'{words}, {name}', ratio, aim)}")
    memory = f"{us['mib']:.0f} MiB{aims.at_most(f'{words}, memory', us['mib'], most_mib) if most_mib else ''}"
    print(f"{words}: {us['rate']:,.1f}/s, {us['processor']:.4f} s processor per 1,000, {memory}, "
          f"{us['reads']:.2f} reads a message{''.join(f'; {part}' for part in parts)}", flush=True)


def cases(senders, case):
    """(name, what to run), in the order of the table of aims."""
    ours, node = senders.ours, senders.nodemailer

    def loopback(pin, place, factors):
        def run():
            plain = case.run(node, 4000, WITHOUT_CHUNKING, pin)["rate"]
            us = case.run(ours, 40_000, WITHOUT_CHUNKING, pin)
            curl = [] if not pin else [("libcurl", case.run(senders.libcurl, 8000, WITHOUT_CHUNKING, pin)["rate"], 3)]
            row(f"loopback, {place}, Pipeline 1", us, ("nodemailer", plain, factors[0]), *curl)
            row(f"loopback, {place}, Pipeline 1, CHUNKING", case.run(ours, 40_000, WITH_CHUNKING, pin),
                ("nodemailer", plain, factors[1]))
        return run

    def attached():
        plain = case.run(node, 600, WITHOUT_CHUNKING, ONE_CORE, attachment=100)["rate"]
        for words, offer, aim in (("", WITHOUT_CHUNKING, 25), (", CHUNKING", WITH_CHUNKING, 40)):
            row(f"loopback, one core, 100 KiB attached, Pipeline 1{words}",
                case.run(ours, 8000, offer, ONE_CORE, attachment=100), ("nodemailer", plain, aim))

    def lock_step():
        source = case.run(senders.smtp_source, 20_000, WITHOUT_CHUNKING, ONE_CORE)["rate"]
        row("loopback, one core, Pipeline 0", case.run(ours, 20_000, WITHOUT_CHUNKING, ONE_CORE, pipeline=0),
            ("smtp-source, which composes nothing", source, 0.9))

    def distant_lock_step():
        for words, offer, trips in (("", WITHOUT_CHUNKING, 4), (", CHUNKING", WITH_CHUNKING, 3)):
            row(f"40 ms, Pipeline 0{words}", case.run(ours, 150, offer, hold=20, pipeline=0),
                (f"the floor of {trips} round trips", 1 / (trips * ROUND_TRIP), 0.95))

    def distant():
        one = case.run(node, 150, WITHOUT_CHUNKING, hold=20)["rate"]
        five = case.run(node, 600, WITHOUT_CHUNKING, hold=20, connections=5)["rate"]
        row("40 ms, Pipeline 1", case.run(ours, 400, WITHOUT_CHUNKING, hold=20), ("nodemailer", one, 1.9),
            ("the floor of one round trip", 1 / ROUND_TRIP, 0.95))
        row("40 ms, Pipeline 1, CHUNKING, 400 recipients", case.run(ours, 400, WITH_CHUNKING, hold=20), ("nodemailer", one, 50))
        row("40 ms, Pipeline 1, CHUNKING", case.run(ours, 4000, WITH_CHUNKING, hold=20), ("nodemailer", one, 95),
            ("nodemailer on five connections", five, 10))

    def several():
        one = case.run(ours, 500, WITHOUT_CHUNKING, late=1, pipeline=0)["rate"]
        for connections, aim in ((2, 1.9), (8, 7)):
            row(f"1 ms late, Pipeline 0, {connections} connections",
                case.run(ours, 500 * connections, WITHOUT_CHUNKING, late=1, pipeline=0, connections=connections),
                ("one", one, aim))

    def several_encrypted():
        one = case.run(ours, 20_000, WITHOUT_CHUNKING, tls=senders.certificate)["rate"]
        for connections in (2, 8):
            row(f"loopback, TLS 1.3, Pipeline 1, {connections} connections",
                case.run(ours, 20_000, WITHOUT_CHUNKING, tls=senders.certificate, connections=connections),
                ("one", one, 1))

    def journal():
        for late, each, connections, aim in ((1, 500, 1, 0.9), (1, 500, 8, 0.85), (0, 20_000, 1, 0.9), (0, 2500, 8, 0.85)):
            ratios = []
            for _ in range(max(case.rounds, 5)):  # what is compared is smaller than what one pair is off
                rates = []
                for journal in ("with", "without"):
                    with tempfile.TemporaryDirectory() as folder, Sink(WITHOUT_CHUNKING, (), late=late) as sink:
                        count = int(each * connections * case.scale)
                        rates.append(float(subprocess.run(
                            list(map(str, (BIN / "bench_journal_share", folder, sink.port, count, connections, 0, journal))),
                            check=True, capture_output=True, text=True).stdout))
                ratios.append(rates[0] / rates[1])
            ratio = statistics.median(ratios)
            words = f"{late} ms late, Pipeline 0, {connections} connections"
            print(f"{words}: with the journal {ratio:.2f} x the rate without{aims.at_least(f'{words}, journal', ratio, aim)}",
                  flush=True)

    def encrypted():
        clear = case.run(ours, 20_000, WITHOUT_CHUNKING, ONE_CORE)["rate"]
        row("loopback, one core, TLS 1.3, Pipeline 1",
            case.run(ours, 20_000, WITHOUT_CHUNKING, ONE_CORE, tls=senders.certificate), ("the same in clear", clear, 0.6))

    def cores():
        if os.cpu_count() != 2:
            print("loopback, TLS 1.3, 8 KiB of HTML: for a computer of two cores, which the sender and the server share")
            return
        shares = []
        for _ in range(case.rounds):
            with Sink(WITH_CHUNKING, (), tls=senders.certificate) as sink, Cores(sink.process.pid) as watched:
                ours(sink.port, int(200_000 * case.scale), (), tls=True, body=senders.long_letter)
            shares.append(watched.busy())
        less, more = (statistics.median(each) for each in zip(*shares))
        print(f"loopback, TLS 1.3, 8 KiB of HTML: the cores are {less:.0%} and {more:.0%} busy while messages go out"
              f"{aims.at_least('both cores', less, 0.85, '85%')}", flush=True)

    def memory():
        for words, count, attachment in (("500 recipients", 500, 0), ("1,000,000 recipients", 1_000_000, 0),
                                         ("20 recipients, 25 MiB attached", 20, 25 * 1024)):
            row(f"memory, {words}", case.run(ours, count, WITH_CHUNKING, attachment=attachment), most_mib=MOST_MIB)

    return {"one core": loopback(ONE_CORE, "one core", (20, 30)), "attachment": attached,
            "free": loopback((), "free placement", (8, 16)), "lock-step": lock_step, "distant lock-step": distant_lock_step,
            "distant": distant, "several": several, "several, tls": several_encrypted, "journal": journal, "tls": encrypted,
            "cores": cores, "memory": memory}


def compare(senders, rounds, scale, other):
    """Over one connection, in turn with another build: the median of the ratios of each pair."""
    for words, count, offer, options in (
            ("loopback, Pipeline 0", 20_000, WITHOUT_CHUNKING, {"pipeline": 0}),
            ("loopback, Pipeline 1", 40_000, WITHOUT_CHUNKING, {}), ("loopback, Pipeline 1, CHUNKING", 40_000, WITH_CHUNKING, {}),
            ("1 ms late, Pipeline 0", 400, WITHOUT_CHUNKING, {"pipeline": 0, "late": 1})):
        pin = () if "late" in options else ONE_CORE
        ratios = []
        for _ in range(rounds):
            us, them = (Case(1, scale).run(senders.ours, count, offer, pin, program=program, **options)
                        for program in (PROGRAM, other))
            ratios.append((us["rate"] / them["rate"], us["processor"] / them["processor"]))
        rate, processor = (sorted(each) for each in zip(*ratios))
        middle = rounds // 2
        print(f"{words}: {rate[middle]:.3f} x its rate ({rate[0]:.3f} to {rate[-1]:.3f}), {processor[middle]:.3f} x its "
              f"processor time ({processor[0]:.3f} to {processor[-1]:.3f})", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--scale", type=float, default=1.0, help="of the number of messages")
    parser.add_argument("--only", default="", help="cases whose name holds this")
    parser.add_argument("--against", type=Path, help="another build of ours")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        if arguments.against:
            return compare(Senders(folder), arguments.rounds, arguments.scale, arguments.against)
        for name, run in cases(Senders(folder), Case(arguments.rounds, arguments.scale)).items():
            if arguments.only in name:
                run()
    aims.end()


if __name__ == "__main__":
    sys.exit(main())
