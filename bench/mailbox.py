#!/usr/bin/env python3
"""Compares the mailbox with Postfix's smtp-sink: messages a second and processor time a message, loaded by smtp-source.

The two servers take turns within each round, so that both see the same machine. smtp-sink and smtp-source are taken out
of the distribution's postfix package; nothing is installed.

  bench/run mailbox [--rounds N] [--messages N]
"""
import argparse
import os
import resource
import shutil
import socket
import statistics
import subprocess
import tempfile
import time

import postfix

SIZE = 4096
TICKS = os.sysconf("SC_CLK_TCK")


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(port):
    for _ in range(200):
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return
        except OSError:
            time.sleep(0.02)
    raise SystemExit(f"nobody listens on port {port}")


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


class Server:
    def __init__(self, name, command, port, environment=None):
        self.name = name
        self.port = port
        self.process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(port)

    def stop(self):
        self.process.terminate()
        self.process.wait()


def load(server, source, environment, sessions, messages, keep_open):
    """Returns messages a second and the server's processor microseconds a message."""
    command = [source, "-s", str(sessions), "-m", str(messages), "-l", str(SIZE), "-f", "ada@sender.example",
               "-t", "bob@recipient.example"] + (["-d"] if keep_open else []) + [f"127.0.0.1:{server.port}"]
    before = processor_seconds(server.process.pid)
    started = time.monotonic()
    subprocess.run(command, env=environment, check=True)
    elapsed = time.monotonic() - started
    return messages / elapsed, (processor_seconds(server.process.pid) - before) * 1e6 / messages


def compare(servers, source, environment, options, sessions, keep_open):
    rates = {server.name: [] for server in servers}
    costs = {server.name: [] for server in servers}
    for number in range(options.rounds):
        turn = servers if number % 2 == 0 else servers[::-1]
        for server in turn:
            rate, cost = load(server, source, environment, sessions, options.messages, keep_open)
            rates[server.name].append(rate)
            costs[server.name].append(cost)
    print(f"\n{sessions} session(s), {'one connection each' if keep_open else 'a connection a message'}:")
    peer = servers[0].name
    for server in servers:
        ratios = [ours / theirs for ours, theirs in zip(rates[server.name], rates[peer])]
        print(f"  {server.name:18} {statistics.median(rates[server.name]):8.0f} messages/s"
              f"  {statistics.median(costs[server.name]):6.1f} us processor time/message"
              f"  {statistics.median(ratios):5.2f} times {peer} (median of {options.rounds} rounds)", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("quillcast", nargs="?", default="build/bench/bin/quillcast")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--messages", type=int, default=20000)
    options = parser.parse_args()
    limit = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))

    folder = tempfile.mkdtemp(prefix="mailbox-bench-")
    os.chmod(folder, 0o755)
    servers = []
    try:
        programs, environment = postfix.unpack(folder)
        # As root it wants to be told whom to become; anybody else it stays.
        become = ["-u", "root"] if os.geteuid() == 0 else []
        port = free_port()
        servers.append(Server("smtp-sink", [os.path.join(programs, "smtp-sink"), *become, f"127.0.0.1:{port}", "1000"],
                              port, environment))
        for name, arguments in (("mailbox --discard", ["--discard"]),
                                ("mailbox --store", ["--store", os.path.join(folder, "box")])):
            port = free_port()
            servers.append(Server(name, [options.quillcast, "mailbox", "--listen", f"127.0.0.1:{port}", *arguments], port))
        source = os.path.join(programs, "smtp-source")
        for sessions in (1, 10):
            for keep_open in (True, False):
                compare(servers, source, environment, options, sessions, keep_open)
    finally:
        for server in servers:
            server.stop()
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
