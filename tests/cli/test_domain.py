"""`quillcast domain`, asked of a name server that others wrote and of small whois servers, all on loopback ports."""
import json
import os
import shutil
import signal
import socket
import subprocess
import threading
import time
import unittest

from quillcast import Case, left_out

KNOT = shutil.which("knotd", path=f"{os.environ.get('PATH', '')}:/usr/sbin")
ZONES = {
    "example.org": """
@ SOA ns admin 1 3600 600 86400 60
@ NS ns
@ A 192.0.2.7
@ AAAA 2001:db8::7
@ MX 20 b
@ MX 10 a
www CNAME @
many AAAA 2001:db8::1
null MX 0 .
xn--mller-kva A 192.0.2.8
ns A 127.0.0.1
""" + "".join(f"many A 10.0.{n // 250}.{n % 250}\n" for n in range(1500)),
    "sender.example": """
@ SOA ns.example.org. admin.example.org. 1 3600 600 86400 60
@ NS ns.example.org.
@ MX 10 mx
@ TXT "v=spf1 include:_spf" ".sender.example -all"
_spf TXT "v=spf1 ip4:192.0.2.7 ~all"
mx A 192.0.2.7
s1._domainkey TXT "v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo="
_dmarc TXT "v=DMARC1; p=none; rua=mailto:d@sender.example"
open TXT "v=spf1 +all"
open TXT "\\027[2J"
""",
    "2.0.192.in-addr.arpa": """
@ SOA ns.example.org. admin.example.org. 1 3600 600 86400 60
@ NS ns.example.org.
7 PTR mail.example.org.
""",
}


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Knot:
    def __init__(self, folder):
        self.port = free_port()
        for name, zone in ZONES.items():
            (folder / f"{name}.zone").write_text("$TTL 60\n" + zone.lstrip())
        (folder / "knot.conf").write_text(
            f"server:\n  rundir: {folder}\n  listen: 127.0.0.1@{self.port}\n  tcp-workers: 1\n  udp-workers: 1\n"
            f"database:\n  storage: {folder}\ntemplate:\n  - id: default\n    storage: {folder}\n    file: %s.zone\n"
            "zone:\n" + "".join(f"  - domain: {name}\n" for name in ZONES))
        self.process = subprocess.Popen([KNOT, "-c", folder / "knot.conf"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        for _ in range(200):
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError("knotd did not start")

    def close(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(20)


class Whois:
    """Sends each connection the next of the answers, or keeps it waiting for None; `asked` has the lines that came."""

    def __init__(self, *answers):
        self.asked = []
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.thread = threading.Thread(target=self.serve, args=(answers,), daemon=True)
        self.thread.start()

    def serve(self, answers):
        for answer in answers:
            peer, _ = self.listener.accept()
            with peer:
                self.asked.append(peer.recv(4096).decode())
                try:
                    peer.sendall(answer) if answer is not None else peer.recv(1)
                except OSError:
                    pass  # it had enough


class Domain(Case):
    def whois(self, *answers):
        server = Whois(*answers)
        self.addCleanup(server.listener.close)
        return server

    def knot(self):
        """The options that lead to it; none where it is not installed."""
        if KNOT is None:
            left_out("domain look-ups against a name server of others", "knotd is not installed")
            return None
        (self.folder / "knot").mkdir()
        knot = Knot(self.folder / "knot")
        self.addCleanup(knot.close)
        return ["--dns", f"127.0.0.1:{knot.port}"]

    def test_tells_whether_a_sender_will_be_believed(self):
        if (dns := self.knot()) is None:
            return
        check = ["domain", "check", "Sender.example", "--selector", "s1", "--server", "192.0.2.7", *dns]
        code, out, err = self.run_program("--json", *check)
        self.assertEqual(code, 1, err)
        findings = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([(one["topic"], one["finding"], one["verdict"]) for one in findings], [
            ("MX", "mx", "good"), ("SPF", "spf", "good"), ("SPF", "spf-covers-server", "good"), ("DKIM", "dkim", "good"),
            ("DMARC", "dmarc-none", "weak"), ("DMARC", "dmarc-alignment", "good"), ("MTA-STS", "no-mta-sts", "note"),
            ("Reverse name", "reverse-name-elsewhere", "bad")])
        code, out, err = self.run_program("domain", "check", "open.sender.example", *dns)
        self.assertEqual(code, 1)
        self.assertIn('bad: SPF: The record lets everybody in the world send for open.sender.example.\n'
                      '  Name those who send for you alone, and end it with "~all" or "-all".\n', out)
        self.assertNotIn("\x1b", out + err)

        self.assertEqual(self.run_program("domain", "check", "a.example", "--dns", "127.0.0.1:1")[0], 69)
        self.assertEqual(self.run_program("domain", "check", "a.example", "--server", "a:b:c", *dns)[0], 64)

        # The account's own domain, asked for with a run; the next run remembers it and asks nobody.
        self.account(9)
        self.group("One", ["bob@example.org"])
        run = ["send", "--group", "One", "--subject", "x", "--body", self.write("letter.html", "<p>y</p>"), "--dry-run"]
        self.assertNotIn("sender.example", self.run_program(*run)[2])
        told = self.run_program(*run, "--check-domain", *dns)[2]
        self.assertEqual(told.count('The record only watches ("p=none")'), 1, told)
        reminder = self.run_program(*run)[2]
        self.assertIn("1 thing to mend was found when sender.example was checked: The record only watches", reminder)
        told = self.run_program(*run, "--check-domain", "--dns", "127.0.0.1:1")[2]
        self.assertIn("Nothing could be found out about sender.example", told)
        self.assertIn("1 thing to mend was found when sender.example was checked", told)
        self.assertEqual(self.run_program(*run, "--dns", "127.0.0.1")[0], 64)
        self.assertEqual(self.run_program("domain", "check", "", *dns)[0], 64)
        self.assertEqual(self.run_program("domain", "check", "--selector", "a b", *dns)[0], 64)
        out = self.run_program("domain", "check", "--selector", "s=s1._domainkey.sender.example.", *dns)[1]
        self.assertIn("s1._domainkey.sender.example.\n", out)
        self.assertEqual(self.run_program("domain", "check", "two..dots")[0], 64)

    def test_right_answers(self):
        if (dns := self.knot()) is None:
            return
        for command, exit_code, out, said in [
            (["ip", "example.org"], 0, "192.0.2.7\n2001:db8::7\n", "2 addresses of example.org."),
            (["ip", "www.example.org"], 0, "192.0.2.7\n2001:db8::7\n", "2 addresses"),
            (["ip", "müller.example.org"], 0, "192.0.2.8\n", "1 address of müller.example.org."),
            (["ip", "no.example.org"], 66, "", "There is no name no.example.org."),
            (["ip", "other.example"], 69, "", "(REFUSED)"),
            (["name", "192.0.2.7"], 0, "mail.example.org\n", "1 name of 192.0.2.7."),
            (["name", "192.0.2.9"], 66, "", "192.0.2.9 does not have a name."),
            (["mx", "example.org"], 0, "10\ta.example.org\n20\tb.example.org\n", "2 hosts take the mail"),
            (["mx", "null.example.org"], 0, "", "takes no mail"),
            (["mx", "ns.example.org"], 0, "", "its mail goes to its own address, 127.0.0.1."),
            (["mx", "no.example.org"], 0, "", "There is no name"),
            (["mx", "other.example"], 69, "Bad DNS\n", "(REFUSED)"),
        ]:
            with self.subTest(command=command):
                code, shown, err = self.run_program("domain", *command, *dns)
                self.assertEqual((code, shown), (exit_code, out))
                self.assertIn(said, err)
        # Too much for a datagram: over TCP, and every one of them.
        many = json.loads(self.ok("--json", "domain", "ip", "many.example.org", *dns))
        self.assertEqual(len(many["addresses"]), 1501)
        self.assertEqual(many["addresses"][-1], "2001:db8::1")
        self.assertEqual(json.loads(self.ok("--json", "domain", "mx", "example.org", *dns)), {
            "domain": "example.org", "code": 2, "word": "", "takes_no_mail": False, "fallback": [],
            "hosts": [{"preference": 10, "host": "a.example.org"}, {"preference": 20, "host": "b.example.org"}],
            "status": "2 hosts take the mail of example.org, the most preferred first."})

    def test_wrong_words(self):
        for command, said in [
            (["mx", "a"], "Domain name must be at least 2 characters."),
            (["whois", "--", "-a.com"], "Domain name can not begin with dash."),
            (["whois", "a.com", "--whois", "x:y"], '"x:y" is not a server.'),
            (["whois", "a.com", "--charset", "none"], "no character set"),
            (["ip", ""], "Please enter your domain."),
            (["name", ""], "Please enter your IP."),
            (["name", "mail"], '"mail" is not an IP address.'),
            (["ip", "a.com", "--dns", "dns.example"], '"dns.example" is not the address of a name server.'),
            (["mx", "a.com", "--dns="], "--dns: names nothing"),
        ]:
            with self.subTest(command=command):
                code, out, err = self.run_program("domain", *command)
                self.assertEqual((code, out), (64, ""))
                self.assertIn(said, err)
        code, out, err = self.run_program("domain", "mx", "a.com", "--dns", "dns.example")
        self.assertEqual((code, out), (64, "Invalid Parameter\n"))

    def test_whois(self):
        named = "Registrar WHOIS Server: whois.registrar.invalid"
        latin = b"Holder: J\xfcrgen\r\n\x1b[2J\x1b]0;title\x07\tend\n"
        first = self.whois(f"{named}\r\n".encode(), latin + named.encode() + b"\n")
        ask = ["domain", "whois", "Müller.example", "--whois", f"127.0.0.1:{first.port}"]
        code, out, err = self.run_program(*ask)
        self.assertEqual((code, out), (0, f"{named}\n"))
        self.assertIn("--follow asks there too", err)
        code, out, err = self.run_program(*ask, "--follow", "--json", "--timeout", "2")
        self.assertNotEqual(code, 0)  # there is no such registrar; the first answer is told all the same
        answers = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([(one["server"], one["charset"], one["complete"]) for one in answers],
                         [(f"127.0.0.1:{first.port}", "Windows-1252", True)])
        self.assertEqual(answers[0]["text"], f"Holder: Jürgen\n\x1b[2J\x1b]0;title\x07\tend\n{named}\n")
        self.assertEqual(answers[0]["referral"], "whois.registrar.invalid:43")
        self.assertNotIn("\x1b", out)
        self.assertEqual(first.asked, ["xn--mller-kva.example\r\n"] * 2)

    def test_whois_shows_nothing_that_moves_a_terminal(self):
        server = self.whois("a\x1b[2J\u009b31m\u202e\tb\r\n".encode(), b"x" * (3 << 20))
        ask = ["domain", "whois", "a.example", "--whois", f"127.0.0.1:{server.port}"]
        self.assertEqual(self.run_program(*ask)[1], "a?[2J?31m?    b\n")
        code, out, err = self.run_program(*ask)
        self.assertEqual(code, 65)
        self.assertIn("longer than 1.0 MiB", err)

    def test_one_interrupt_ends_a_question(self):
        silent = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.addCleanup(silent.close)
        silent.bind(("127.0.0.1", 0))
        whois = self.whois(None)
        for command in (["whois", "a.example", "--whois", f"127.0.0.1:{whois.port}"],
                        ["mx", "a.example", "--dns", f"127.0.0.1:{silent.getsockname()[1]}"]):
            with self.subTest(command=command), self.popen("domain", *command) as process:
                if command[0] == "mx":
                    silent.recv(4096)
                else:
                    while not whois.asked:
                        time.sleep(0.01)
                begun = time.monotonic()
                process.send_signal(signal.SIGINT)
                out, err = process.communicate(timeout=30)
                self.assertEqual((process.returncode, out), (75, b""))
                self.assertLess(time.monotonic() - begun, 12)  # of its 15 or 30; a busy machine may take one of them
        code, out, _ = self.run_program("domain", "mx", "a.example", "--timeout", "1", "--dns",
                                        f"127.0.0.1:{silent.getsockname()[1]}")
        self.assertEqual((code, out), (69, "No DNS\n"))


if __name__ == "__main__":
    unittest.main()
