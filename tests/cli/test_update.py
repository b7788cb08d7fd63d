"""The check for a newer version against servers of the test's own: each kind of answer, and what stands in between."""
import json
import os
import socket
import ssl
import subprocess
import threading
import time
import unittest

from quillcast import PROGRAM, Case, signal

OK = b"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\n\r\n"
GIGABYTE = 1 << 30


class Server:
    """Takes one connection after the other on loopback; `serve(socket)` has each to itself."""

    def __init__(self, case, serve, context=None):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.asked = []
        self.serve, self.context = serve, context
        threading.Thread(target=self.run, daemon=True).start()
        case.addCleanup(self.listener.close)

    def run(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            threading.Thread(target=self.one, args=(connection,), daemon=True).start()

    def one(self, connection):
        try:
            with self.context.wrap_socket(connection, server_side=True) if self.context else connection as stream:
                head = b""
                while b"\r\n\r\n" not in head and (piece := stream.recv(4096)):
                    head += piece
                self.asked += [head] if head else []
                self.serve(stream)
        except OSError:
            pass


def say(reply):
    return lambda stream: stream.sendall(reply)


def endless(stream):
    """A gigabyte, as far as anybody listens."""
    for _ in range(GIGABYTE >> 16):
        stream.sendall(b"x" * (1 << 16))


def endless_header(stream):
    stream.sendall(b"HTTP/1.1 200 OK\r\n")
    for i in range(GIGABYTE >> 10):
        stream.sendall(b"X-%d: " % i + b"x" * 1000 + b"\r\n")


class Update(Case):
    def setUp(self):
        super().setUp()
        self.trusted = self.folder / "server.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days",
                        "1", "-subj", "/CN=test", "-addext", "subjectAltName=IP:127.0.0.1,DNS:updates.invalid", "-keyout",
                        self.folder / "server.key", "-out", self.trusted], check=True, capture_output=True)
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(self.trusted, self.folder / "server.key")
        # The environment's own proxies are not asked.
        self.environment = os.environ | {"SSL_CERT_FILE": str(self.trusted), "https_proxy": "http://127.0.0.1:1"}

    def check(self, address, *options, **changes):
        done = subprocess.run([PROGRAM, "--profile", self.profile, *options, "update", "check"], timeout=60, text=True,
                              env=self.environment | {"QUILLCAST_UPDATE_ADDRESS": address} | changes, capture_output=True)
        return done.returncode, done.stdout, done.stderr

    def served(self, serve):
        return Server(self, serve, self.context)

    def test_each_answer_has_its_sentence(self):
        for name, serve, code, piece in (
                ("newer", say(OK + b'{"version": "1.10", "notes": "Faster."}'), 0, "Quillcast 1.10 is there; this is 1.0. Faster."),
                ("no notes", say(OK + b'{"version": "2.0", "notes": 7}'), 0, "Quillcast 2.0 is there; this is 1.0.\n"),
                ("same", say(OK + b'{"version": "1.0"}'), 0, "Quillcast 1.0 is the latest version."),
                ("older", say(OK + b'{"version": "0.9"}'), 0, "newer than the latest that was published: 0.9"),
                ("control characters", say(OK + b'{"version": "2.0", "notes": "a\\u001b[2Jb\\nc"}'), 0, "a?[2Jb?c"),
                ("no JSON", say(OK + b"<html>Sign in to the network"), 65, "names no version"),
                ("another JSON", say(OK + b'["1.1"]'), 65, "names no version"),
                ("a number", say(OK + b'{"version": 1.1}'), 65, "names no version"),
                ("deep", say(OK + b"[" * 16000), 65, "names no version"),
                ("nothing", say(OK), 65, "names no version"),
                ("404", say(b"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n"), 69, "it says 404"),
                ("redirect", say(b"HTTP/1.1 302 Found\r\nLocation: https://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n"), 65,
                 "leads to another address, which is not followed"),
                ("huge", say(OK.replace(b"Conn", b"Content-Length: %d\r\nConn" % GIGABYTE)), 65, "longer than 16 KiB"),
                ("a gigabyte", lambda stream: (stream.sendall(OK), endless(stream)), 65, "longer than 16 KiB"),
                ("a header without end", endless_header, 65, "longer than 16 KiB"),
                ("no HTTP", say(b"220 mail.example ESMTP\r\n"), 69, "The question to"),
                ("hung up", lambda stream: None, 69, "The question to")):
            with self.subTest(name=name):
                server = self.served(serve)
                begun = time.monotonic()
                got, out, err = self.check(f"https://127.0.0.1:{server.port}/latest.json?x=1")
                self.assertEqual(got, code, out + err)
                self.assertIn(piece, out + err)
                self.assertLess(time.monotonic() - begun, 20)
                self.assertRegex(server.asked[0], rb"\AGET /latest.json\?x=1 HTTP/1.1\r\nHost: 127.0.0.1:\d+\r\nAccept: \*/\*\r\n\r\n\Z")
                self.assertEqual(len(server.asked), 1)
        server = self.served(say(OK + b'{"version": "1.0"}'))
        _, out, _ = self.check(f"https://127.0.0.1:{server.port}/", "--json")
        self.assertEqual(json.loads(out), {"version": "1.0", "latest": "1.0", "standing": "same", "notes": ""})

    def test_a_wrong_certificate_is_no_answer(self):
        server = self.served(say(OK + b'{"version": "1.1"}'))
        other = self.folder / "other.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days",
                        "1", "-subj", "/CN=other", "-keyout", os.devnull, "-out", other], check=True, capture_output=True)
        for address, changes in ((f"https://127.0.0.1:{server.port}/", {"SSL_CERT_FILE": str(other)}),
                                 (f"https://localhost:{server.port}/", {})):
            code, out, err = self.check(address, **changes)
            self.assertEqual((code, out), (77, ""), err)
            self.assertIn("is not trusted, so no answer was taken", err)
        self.assertEqual(server.asked, [])

    def test_a_proxy_makes_a_tunnel_or_says_no(self):
        server = self.served(say(OK + b'{"version": "1.1"}'))

        def tunnel(stream):
            stream.sendall(b"HTTP/1.1 200 Connection established\r\n\r\n")
            with socket.create_connection(("127.0.0.1", server.port)) as there:
                threading.Thread(target=self.pump, args=(stream, there), daemon=True).start()
                self.pump(there, stream)
                stream.shutdown(socket.SHUT_RDWR)
        for name, serve, code, piece in (
                ("tunnel", tunnel, 0, "Quillcast 1.1 is there"),
                ("refuses", say(b"HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n"), 69, "does not let us through: it answers 403"),
                ("wants a password", say(b"HTTP/1.1 407 Proxy Authentication Required\r\nProxy-Authenticate: Basic realm=x\r\n"
                                         b"Content-Length: 0\r\n\r\n"), 69, "it answers 407"),
                ("says a lot", endless_header, 65, "longer than 16 KiB")):
            with self.subTest(name=name):
                proxy = Server(self, serve)
                self.ok("update", "proxy", f"127.0.0.1:{proxy.port}")
                code_, out, err = self.check("https://updates.invalid/latest")
                self.assertEqual(code_, code, out + err)
                self.assertIn(piece, out + err)
                self.assertTrue(proxy.asked[0].startswith(b"CONNECT updates.invalid:443 HTTP/1.1\r\n"), proxy.asked)
                self.assertNotIn(b"Authorization", proxy.asked[0])
        shown = json.loads(self.ok("--json", "update", "proxy", "--off"))
        self.assertEqual((shown["proxy"], shown["port"]), (False, str(proxy.port)))
        for wrong in ("", "p", "p:0", "user@p:1", "p:99999"):
            self.assertEqual(self.run_program("update", "proxy", wrong)[0], 64, wrong)
        self.assertEqual(self.run_program("update", "proxy", "--timeout", "0")[0], 64)

    @staticmethod
    def pump(source, target):
        try:
            while piece := source.recv(65536):
                target.sendall(piece)
        except OSError:
            pass

    def test_an_interrupt_ends_it(self):
        arrived = threading.Event()
        server = self.served(lambda stream: (arrived.set(), time.sleep(30)))
        with subprocess.Popen([PROGRAM, "--profile", self.profile, "update", "check"], stderr=subprocess.PIPE, text=True,
                              env=self.environment | {"QUILLCAST_UPDATE_ADDRESS": f"https://127.0.0.1:{server.port}/"}) as asking:
            self.assertTrue(arrived.wait(20))
            asking.send_signal(signal.SIGINT)
            _, err = asking.communicate(timeout=60)
        self.assertEqual(asking.returncode, 75, err)


if __name__ == "__main__":
    unittest.main()
