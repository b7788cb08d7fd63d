#!/usr/bin/env python3
"""A keyring for tests: org.freedesktop.secrets on the bus of a test, with one collection and one way to behave.

    keyring_service.py BEHAVIOUR [LOG]

open      does what it is asked                    locked    asks for a password, and gets it
refuses   asks, and the person presses Cancel      endless   asks, and nobody ever answers, nor ends the question
silent    answers nothing                          full      takes no new secret
broken    gives away no secret                     none      has no collection yet
elsewhere keeps in a new collection beside what it had
late      keeps what it is given, and never says so
held      keeps what it is given, and says so when the test lets it
"""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

ROOT = "/org/freedesktop/secrets"
SERVICE, COLLECTION, ITEM, PROMPT = (f"org.freedesktop.Secret.{name}" for name in ("Service", "Collection", "Item", "Prompt"))
PROPERTIES = dbus.PROPERTIES_IFACE
NO_OBJECT = dbus.ObjectPath("/")
BEHAVIOUR = sys.argv[1]


class Failed(dbus.DBusException):
    def __init__(self, name, text):
        super().__init__(text, name=f"org.freedesktop.{name}")


def log(line):
    if len(sys.argv) > 2:
        with open(sys.argv[2], "a", encoding="utf-8") as file:
            file.write(line + "\n")


class Object(dbus.service.Object):
    def properties(self):
        return {}

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, _, name):
        return self.properties()[name]

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, _):
        return self.properties()


class Item(Object):
    def __init__(self, keyring, path, properties, secret):
        super().__init__(keyring.bus, path)
        self.keyring, self.path, self.own, self.secret = keyring, path, properties, secret
        self.modified = keyring.made

    def attributes(self):
        return self.own[f"{ITEM}.Attributes"]

    def properties(self):
        return {"Locked": self.keyring.locked, "Attributes": self.attributes(), "Label": self.own[f"{ITEM}.Label"],
                "Type": "", "Created": dbus.UInt64(0), "Modified": dbus.UInt64(self.modified)}

    @dbus.service.method(ITEM, in_signature="o", out_signature="(oayays)")
    def GetSecret(self, session):
        if BEHAVIOUR == "broken":
            raise Failed("DBus.Error.Failed", "The file of\nthe keyring is damaged")
        return (session, dbus.ByteArray(b""), dbus.ByteArray(self.secret), "text/plain")

    @dbus.service.method(ITEM, out_signature="o")
    def Delete(self):
        log("deleted " + str(self.own[f"{ITEM}.Label"]))
        self.keyring.items.remove(self)
        self.remove_from_connection()
        return NO_OBJECT


class Prompt(Object):
    def __init__(self, keyring, objects):
        keyring.prompts += 1
        self.path = dbus.ObjectPath(f"{ROOT}/prompt/p{keyring.prompts}")
        super().__init__(keyring.bus, self.path)
        self.keyring, self.objects = keyring, objects

    @dbus.service.method(PROMPT, in_signature="s")
    def Prompt(self, _):
        log("asked for a password")
        if BEHAVIOUR != "endless":
            GLib.idle_add(self.answer)

    def answer(self):
        self.keyring.locked = BEHAVIOUR == "refuses"
        done = [] if self.keyring.locked else self.objects
        self.Completed(self.keyring.locked, dbus.Array(done, signature="o"))

    @dbus.service.method(PROMPT)
    def Dismiss(self):
        pass

    @dbus.service.signal(PROMPT, signature="bv")
    def Completed(self, dismissed, result):
        pass


class Keyring(Object):
    """The service, and its collection at the path of the alias."""

    def __init__(self, bus):
        self.bus, self.items, self.held, self.prompts, self.made = bus, [], [], 0, 0
        self.locked = BEHAVIOUR in ("locked", "refuses", "endless")
        super().__init__(bus, ROOT)
        self.collection = Collection(self)

    @dbus.service.method(SERVICE, in_signature="sv", out_signature="vo")
    def OpenSession(self, algorithm, _):
        if algorithm != "plain":
            raise Failed("DBus.Error.NotSupported", "plain alone")
        return ("", dbus.ObjectPath(f"{ROOT}/session/s1"))

    @dbus.service.method(SERVICE, in_signature="a{ss}", out_signature="aoao", async_callbacks=("answer", "fail"))
    def SearchItems(self, attributes, answer, fail):
        if BEHAVIOUR == "silent":
            return
        found = [item.path for item in self.items if attributes.items() <= item.attributes().items()]
        answer(*(([], found) if self.locked else (found, [])))

    @dbus.service.method(SERVICE, in_signature="ao", out_signature="aoo")
    def Unlock(self, objects):
        return ([], Prompt(self, objects).path) if self.locked else (objects, NO_OBJECT)

    @dbus.service.method(SERVICE, in_signature="s", out_signature="o")
    def ReadAlias(self, _):
        return NO_OBJECT if BEHAVIOUR == "none" else self.collection.path


class Collection(Object):
    path = dbus.ObjectPath(f"{ROOT}/aliases/default")

    def __init__(self, keyring):
        super().__init__(keyring.bus, self.path)
        self.keyring = keyring

    def properties(self):
        return {"Locked": self.keyring.locked, "Label": "Login", "Created": dbus.UInt64(0), "Modified": dbus.UInt64(0),
                "Items": dbus.Array([item.path for item in self.keyring.items], signature="o")}

    @dbus.service.method(COLLECTION, in_signature="a{sv}(oayays)b", out_signature="oo", async_callbacks=("answer", "fail"))
    def CreateItem(self, properties, secret, replace, answer, fail):
        try:
            path = self.kept(properties, secret, replace)
        except Failed as why:
            return fail(why)
        if BEHAVIOUR == "held":
            self.keyring.held.append(lambda: answer(path, NO_OBJECT))
        elif BEHAVIOUR != "late":
            answer(path, NO_OBJECT)

    def kept(self, properties, secret, replace):
        if BEHAVIOUR == "full":
            raise Failed("DBus.Error.Failed", "No space left on device")
        if self.keyring.locked:
            raise Failed("Secret.Error.IsLocked", "locked")
        label, attributes = str(properties[f"{ITEM}.Label"]), properties[f"{ITEM}.Attributes"]
        log(f"kept {label}")
        same = [item for item in self.keyring.items if item.attributes() == attributes]
        for item in same if replace and BEHAVIOUR != "elsewhere" else ():
            item.secret = bytes(secret[2])
            return item.path
        self.keyring.made += 1
        path = dbus.ObjectPath(f"{ROOT}/collection/login/i{self.keyring.made}")
        self.keyring.items.append(Item(self.keyring, path, properties, bytes(secret[2])))
        return path


class Control(dbus.service.Object):
    """What the test does to it."""

    def __init__(self, keyring):
        super().__init__(keyring.bus, "/control")
        self.keyring = keyring

    @dbus.service.method("test.Control", in_signature="s")
    def Behave(self, behaviour):
        global BEHAVIOUR
        BEHAVIOUR = str(behaviour)
        self.keyring.locked = BEHAVIOUR in ("locked", "refuses", "endless")

    @dbus.service.method("test.Control")
    def LetGo(self):
        while self.keyring.held:
            self.keyring.held.pop()()

    @dbus.service.method("test.Control", out_signature="a(ss)")
    def Contents(self):
        return dbus.Array([(item.own[f"{ITEM}.Label"], item.secret.decode()) for item in self.keyring.items],
                          signature="(ss)")


if __name__ == "__main__":
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    session = dbus.SessionBus()
    Control(Keyring(session))
    name = dbus.service.BusName("org.freedesktop.secrets", session)
    print("ready", flush=True)
    GLib.MainLoop().run()
