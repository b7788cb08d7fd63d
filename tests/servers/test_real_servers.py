"""Mailings to Postfix, OpenSMTPD and Exim: everybody gets one copy, as it was sent."""
import email
import email.policy
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "cli"))
import real_servers  # noqa: E402
from quillcast import Case, PROGRAM, left_out  # noqa: E402

FEW = 10
COUNT = int(os.environ.get("QUILLCAST_MAILING", "20" if os.environ.get("QUILLCAST_SANITIZE") else "1000"))
CACHE = Path(tempfile.gettempdir()) / f"quillcast-test-servers-{os.getuid()}"
# Mail servers force each message to the disk several times; in memory that costs nothing.
IN_MEMORY = next((folder for folder in ("/dev/shm",) if os.access(folder, os.W_OK)), None)
BODY = "<p>Dear $*MergeFirstName*$,</p>\n.\n<p>.leading dot, From here on: ä €</p>\nFrom me\n"


def first_name(number):
    return f"Zoë {number}"


def say(words):
    print("\n" + words, file=sys.stderr)


class RealServers(Case):
    @classmethod
    def setUpClass(cls):
        CACHE.mkdir(mode=0o700, exist_ok=True)
        if CACHE.stat().st_uid != os.getuid():
            raise OSError(f"{CACHE} belongs to somebody else")

    def start(self, kind):
        folder = Path(tempfile.mkdtemp(prefix="quillcast-server-", dir=IN_MEMORY))
        certificate, key = folder / "cert.pem", folder / "key.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost", "-addext",
                        "subjectAltName=IP:127.0.0.1", "-days", "2", "-out", certificate, "-keyout", key],
                       check=True, capture_output=True)
        os.environ["SSL_CERT_FILE"] = str(certificate)
        self.addCleanup(os.environ.pop, "SSL_CERT_FILE")
        try:
            server = kind(CACHE, folder, certificate, key)
        except real_servers.Unavailable as reason:
            shutil.rmtree(folder, ignore_errors=True)
            left_out(kind.name, reason)
            self.skipTest(str(reason))
        self.addCleanup(server.close)
        return server

    def import_people(self, group, count):
        self.ok("group", "new", group)
        people = self.write("people.csv", "".join(f"user{number}@example.org,{first_name(number)}\n"
                                                  for number in range(count)))
        self.ok("import", people, "--group", group, "--opt-in", "--map", "Email Address=1,First Name=2")

    def mail(self, server, group, count, *settings):
        self.account(server.port, *settings)
        results, code, err = self.send("--group", group, "--subject", "For $*MergeFirstName*$", "--body", self.body)
        self.assertTrue(results, err)
        self.assertEqual((code, results[-1]["sent"]), (0, count), f"{settings}\n{err}\n{results[:2]}")
        got = server.delivered(count)
        server.forget()
        expected = {f"user{number}": first_name(number) for number in range(count)}
        self.assertEqual(sorted(who for who, _ in got), sorted(expected), "somebody has no copy, or two")
        identities = set()
        for who, content in got:
            message = email.message_from_bytes(content, policy=email.policy.SMTP)
            identities.add(message["Message-ID"])
            self.assertEqual(message["Subject"], f"For {expected[who]}")
            html = message.get_body(("html",)).get_content().replace("\r\n", "\n")
            self.assertEqual(html, BODY.replace("$*MergeFirstName*$", expected[who]))
        self.assertEqual(len(identities), count)

    def mailings(self, kind):
        server = self.start(kind)
        self.body = self.write("body.html", BODY)
        self.import_people("All", COUNT)
        self.import_people("Few", FEW)
        secret = self.write("secret", real_servers.PASSWORD + "\n")
        self.account(server.port, "Auth=1", f"Username={real_servers.USER}", "--password-file", secret,
                     "CharSet=Unicode (UTF-8)")
        with_tls = server.tls_works()
        self.assertTrue(with_tls or kind.tls_may_fail, "no other client can speak TLS with it either")
        if not with_tls:
            left_out(f"TLS and signing in with {kind.name}", "its own TLS fails for every client here")
        for pipeline in ("Pipeline=0", "Pipeline=1"):
            self.mail(server, "All", COUNT, pipeline, "Security=None", "Auth=0")
            if not with_tls:
                continue
            signed_in = ("Security=TLS", f"Port={server.tls_port}", "Auth=1", f"Username={real_servers.USER}",
                         "--password-file", secret)
            self.mail(server, "All", COUNT, pipeline, *signed_in, "AuthMode=AUTH LOGIN")
            self.mail(server, "Few", FEW, pipeline, "Security=STARTTLS", "Auth=0")
            for mode in server.ways_in:
                self.mail(server, "Few", FEW, pipeline, *signed_in, f"AuthMode={mode}")
        say(f"{kind.name}: Pipeline 0 and 1{', clear, TLS and signed in' if with_tls else ''}: "
            f"{COUNT} recipients each, everybody one copy, as sent")

    def test_postfix(self):
        self.mailings(real_servers.Postfix)

    def test_opensmtpd(self):
        self.mailings(real_servers.OpenSmtpd)

    def test_exim(self):
        self.mailings(real_servers.Exim)


if __name__ == "__main__":
    unittest.main()
