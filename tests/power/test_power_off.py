#!/usr/bin/env python3
"""Switching off, asked of a login manager on a bus of the test's own. This machine's is never reached: without that bus
nothing is asked at all."""
import contextlib
import os
import signal
import socket
import subprocess
import sys
import time
import unittest
from pathlib import Path

import dbusmock
from dbusmock import DBusTestCase

sys.path.insert(0, str(Path(__file__).parents[1]))
import private_bus

POWER_OFF = os.environ["QUILLCAST_POWER_OFF"]
MANAGER = "org.freedesktop.login1.Manager"
DENIED = ('raise dbus.exceptions.DBusException("Interactive authentication\\nrequired.", '
          'name="org.freedesktop.DBus.Error.InteractiveAuthorizationRequired")')
TAKEN = (0, "taken")
SAYS_NO = "The system did not let itself be switched off"
WHAT_NEXT = " Switch it off by hand; the run is finished and reported."
ASKED = "poweroff --ignore-inhibitors --no-ask-password"


def refused(why):
    return 77, f"{SAYS_NO}{why}{WHAT_NEXT}"


class PowerOff(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder, self.bus = private_bus.begin(self)

    def login_manager(self, does):
        """One on the bus, whose PowerOff does this; what it is asked is logged."""
        mock, manager = DBusTestCase.spawn_server_template("logind", {}, stdout=subprocess.PIPE)
        self.addCleanup(mock.stdout.close)
        self.addCleanup(mock.wait, 10)
        self.addCleanup(mock.kill)
        manager.AddMethod(MANAGER, "PowerOff", "b", "", does, dbus_interface=dbusmock.MOCK_IFACE)
        return manager

    def service_manager(self, does):
        program = self.folder / "systemctl"
        program.write_text(f'#!/bin/sh\necho "$@" >>{self.folder}/asked\n{does}\n')
        program.chmod(0o700)

    def ask(self, bus=None):
        """Exit code and words, and what the service manager was asked."""
        asked = self.folder / "asked"
        asked.unlink(missing_ok=True)
        done = subprocess.run([POWER_OFF, bus or self.bus, self.folder / "systemctl"], stdout=subprocess.PIPE, text=True,
                              timeout=20, env={"PATH": "/usr/bin:/bin"}, check=False)
        return (done.returncode, done.stdout.strip()), asked.read_text().strip() if asked.exists() else ""

    def test_the_login_manager_has_the_say(self):
        self.service_manager("exit 0")
        manager = self.login_manager("")
        for name, does, comes_to in (
                ("takes it", "", TAKEN),
                ("refuses", DENIED, refused(": Interactive authentication?required.")),
                ("is silent", "import time; time.sleep(1.2)", refused(": Connection timed out."))):
            with self.subTest(name):
                manager.AddMethod(MANAGER, "PowerOff", "b", "", does, dbus_interface=dbusmock.MOCK_IFACE)
                manager.ClearCalls(dbus_interface=dbusmock.MOCK_IFACE)
                self.assertEqual(self.ask(), (comes_to, ""))
                calls = manager.GetCalls(dbus_interface=dbusmock.MOCK_IFACE)
                self.assertEqual([(str(what), [bool(a) for a in with_]) for _, what, with_ in calls],
                                 [("PowerOff", [False])])

    def test_the_service_manager_is_asked_where_there_is_no_other(self):
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(f"{self.folder}/silent")
        listener.listen()
        for name, does, bus, comes_to in (
                ("takes it", "exit 0", None, TAKEN),
                ("refuses", "exit 1", None, refused(".")),
                ("hangs", "exec sleep 30", None, refused(": the service manager gave no answer.")),
                ("no bus", "exit 0", f"unix:path={self.folder}/nowhere", TAKEN),
                ("a bus that lets nobody in", "exit 0", f"unix:path={self.folder}/silent", TAKEN)):
            with self.subTest(name):
                self.service_manager(does)
                began = time.monotonic()
                self.assertEqual(self.ask(bus), (comes_to, ASKED))
                self.assertLess(time.monotonic() - began, 10)
        (self.folder / "systemctl").unlink()
        self.assertEqual(self.ask(),
                         (refused(": neither a login manager nor a service manager can be asked."), ""))

    def test_the_machine_stays_awake_as_long_as_it_is_held(self):
        manager = self.login_manager("")
        method = lambda *what: manager.AddMethod(MANAGER, *what, dbus_interface=dbusmock.MOCK_IFACE)
        method("Inhibit", "ssss", "h", "import os; self.end, given = os.pipe(); os.set_blocking(self.end, False)\n"
               "ret = dbus.types.UnixFd(given); os.close(given)")
        method("IsHeld", "", "b", "import os\ntry: ret = os.read(self.end, 1) != b''\nexcept BlockingIOError: ret = True")
        held = lambda: bool(manager.IsHeld(dbus_interface=MANAGER))
        with self.stay_awake() as process:
            self.assertEqual(process.stdout.readline(), "awake\n")
            self.assertEqual([str(word) for word in manager.GetCalls(dbus_interface=dbusmock.MOCK_IFACE)[0][2]],
                             ["sleep:idle", "Quillcast Classic", "Messages are being sent.", "block"])
            self.assertTrue(held())
            process.stdin.write("\n")
            process.stdin.flush()
            self.assertEqual(process.stdout.readline(), "done\n")
            self.assertFalse(held())

    def test_work_goes_on_where_nobody_keeps_the_machine_awake(self):
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(f"{self.folder}/silent")
        listener.listen()
        manager = self.login_manager("")
        for name, bus, does in (("no bus", f"unix:path={self.folder}/nowhere", None),
                                ("a bus that lets nobody in", f"unix:path={self.folder}/silent", None),
                                ("refused", None, DENIED), ("no file", None, ""),
                                ("silent", None, "import time; time.sleep(4)")):
            with self.subTest(name):
                manager.AddMethod(MANAGER, "Inhibit", "ssss", "", does or "", dbus_interface=dbusmock.MOCK_IFACE)
                began = time.monotonic()
                with self.stay_awake(bus) as process:
                    self.assertEqual(process.stdout.readline(), "may fall asleep\n")
                    self.assertLess(time.monotonic() - began, 3)

    @contextlib.contextmanager
    def stay_awake(self, bus=None):
        with subprocess.Popen([POWER_OFF, bus or self.bus, self.folder / "systemctl", "awake"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, text=True, env={"PATH": "/usr/bin:/bin"}) as process:
            yield process
            process.stdin.close()

    def test_a_cancel_is_heard_at_each_step(self):
        before, after = ((75, f"Cancelled; the system {said}") for said in (
            "was not asked to switch off.", "had been asked to switch off already, and may still do it."))
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(f"{self.folder}/silent")
        listener.listen()
        self.service_manager("exec sleep 30")
        for name, bus, manager, comes_to in (
                ("nobody lets it in", f"unix:path={self.folder}/silent", None, (before, "")),
                ("the service manager hangs", self.bus, None, (after, ASKED)),
                ("the login manager is silent", self.bus, "import time; time.sleep(3)", (after, ""))):
            with self.subTest(name):
                asked = self.folder / "asked"
                asked.unlink(missing_ok=True)
                if manager:
                    self.login_manager(manager)
                with subprocess.Popen([POWER_OFF, bus, self.folder / "systemctl", "cancel"], stdout=subprocess.PIPE,
                                      text=True, env={"PATH": "/usr/bin:/bin"}) as process:
                    time.sleep(0.8)
                    process.send_signal(signal.SIGUSR1)
                    out = process.communicate(timeout=2)[0]  # far from the end of its patience
                self.assertEqual(((process.returncode, out.strip()), asked.read_text().strip() if asked.exists() else ""),
                                 comes_to)

    def test_nothing_but_a_bus_of_the_test_is_asked(self):
        self.service_manager("exit 0")
        self.assertEqual(self.ask("unix:path=/run/dbus/system_bus_socket"),
                         ((64, "not a test's own bus and program"), ""))


if __name__ == "__main__":
    unittest.main()
