"""A mail server is tried from the command line: what is told to people and to programs, and by which exit code."""
import json
import signal
import socket
import subprocess
import unittest

from quillcast import PROGRAM, Case
from test_account import serve


class Server(Case):
    def test_what_is_told(self):
        box = self.mailbox("--auth", "ada", "--password-file", self.write("secret", "right-7"))
        greets = ["220 mx \x1b[2J\u009b1m ESMTP", "250-mx\r\n250-X\x1b]0;x\x07\r\n250 SIZE 10", "221 bye"]
        for target, options, exit_code, code, verdict, words in (
                (lambda: f"127.0.0.1:{box.port}", (), 0, 0, "in-clear", "it is this computer itself"),
                (lambda: f"127.0.0.1:{box.port}", ("--security", "starttls"), 69, 5, "no-starttls", "does not offer STARTTLS"),
                (lambda: f"[::ffff:127.0.0.1]:{serve(greets)}", (), 0, 0, "no-sign-in-in-clear", "offers no way to sign in"),
                (lambda: f"localhost:{serve(['554 5.7.1 go away'])}", (), 69, 5, "turned-away", "554 5.7.1 go away"),
                (lambda: f"localhost:{serve([])}", ("--timeout", "1"), 69, 16, "hung-up", "without a word"),
                (lambda: f"localhost:{serve(['220 mx', '250 mx'])}", (), 0, 6, "parts-badly", "no harm"),
                (lambda: "localhost:1", (), 69, 9, "port-refused", "nothing listens on its port 1"),
                (lambda: "nobody.onion", (), 69, 17, "name-unknown", "No name server knows nobody.onion.")):
            with self.subTest(verdict=verdict):
                got, out, err = self.run_program("server", "test", target(), *options)
                self.assertEqual(got, exit_code, out + err)
                self.assertIn(words, out)
                self.assertEqual(out.startswith(f"Error {code}: "), code != 0, out)
                self.assertFalse(set("\x1b\x07\u009b") & set(out + err), out)
                got, out, err = self.run_program("--json", "server", "test", target(), *options)
                self.assertEqual(got, exit_code, out + err)
                told = json.loads(out)
                self.assertEqual((told["code"], told["verdict"]), (code, verdict))
                self.assertIn(words, " ".join(told["meaning"]))
        self.assertEqual(box.messages(), [])  # nothing was sent

    def test_without_a_network_no_name_is_blamed(self):
        inside = ["unshare", "-r", "-n", "--"]
        if subprocess.run(inside + ["true"], capture_output=True).returncode != 0:
            self.skipTest("this computer lets nobody leave the network for a while")
        for arguments, exit_code, words in ((("server", "test", "smtp.example.com:587"), 69, "No name server can be reached"),
                                            (("domain", "whois", "example.com"), 69, "cannot be reached: ")):
            with self.subTest(arguments=arguments):
                done = subprocess.run(inside + [PROGRAM, "--profile", str(self.profile), *arguments], capture_output=True, text=True, timeout=60)
                told = done.stdout + done.stderr
                self.assertEqual(done.returncode, exit_code, told)
                self.assertIn(words, told)
                self.assertIn("connected to the network", told)
                self.assertNotIn("spelling", told)

    def test_programs_get_all_of_it(self):
        box = self.mailbox("--auth", "ada", "--password-file", self.write("secret", "right-7"))
        self.ok("account", "threads", "--smtp", "No")
        told = json.loads(self.ok("--json", "server", "test", f"127.0.0.1:{box.port}"))
        self.assertEqual([(s["step"], s["done"]) for s in told["steps"]],
                         [(name, True) for name in ("name", "connect", "greeting", "ehlo", "quit")])
        self.assertTrue(all(s["ms"] >= 0 for s in told["steps"]))
        self.assertEqual(told["addresses"], [{"address": f"127.0.0.1:{box.port}", "connected": True}])
        self.assertIn("PLAIN", told["in_clear"]["sign_in"])
        self.assertIn("PIPELINING", told["in_clear"]["extensions"])
        self.assertEqual((told["tls"], told["under_tls"], told["threading"]), (None, None, 2))
        self.assertTrue(told["report"].startswith("S: 220 "), told["report"])
        self.assertTrue(told["report"].endswith("\r\n"))

    def test_of_a_list_the_first_that_works_is_told(self):
        refuses = serve(["554 5.7.1 go away"])
        takes = serve(["220 mx ESMTP", "250 mx", "221 bye"])
        told = json.loads(self.ok("--json", "server", "test", f"localhost:{refuses};localhost:{takes};[::1]:2525"))
        self.assertEqual((told["port"], told["verdict"]), (takes, "no-sign-in-in-clear"))
        self.assertNotIn("554", told["report"])
        (other,) = told["others"]
        self.assertEqual((other["server"], other["port"], other["code"], other["verdict"]),
                         ("localhost", refuses, 5, "turned-away"))
        self.assertTrue(other["report"].endswith("S: 554 5.7.1 go away\r\n"), other["report"])
        self.assertEqual(told["untried"], ["[::1]:2525"])

    def test_what_is_wrong_with_a_command_line(self):
        for arguments, words in (((), "server is required"), (("",), "Please enter your mail server."),
                                 (("localhost:0",), "names no port"), (("localhost:smtp",), "names no port"),
                                 ((":2525",), "no name of a mail server"),
                                 (("localhost", "--security", "SSL"), "--security"),
                                 (("localhost", "--timeout", "0"), "--timeout")):
            with self.subTest(arguments=arguments):
                code, out, err = self.run_program("server", "test", *arguments)
                self.assertEqual(code, 64, out + err)
                self.assertIn(words, out + err)

    def test_an_interrupt_ends_it(self):
        listener = socket.create_server(("127.0.0.1", 0))
        with listener, self.popen("server", "test", f"127.0.0.1:{listener.getsockname()[1]}") as process:
            with listener.accept()[0]:  # it waits for a greeting now
                process.send_signal(signal.SIGINT)
                out, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 75, err.decode())
        self.assertIn("Error 20: The operation cancelled.", out.decode())


if __name__ == "__main__":
    unittest.main()
