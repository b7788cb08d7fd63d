"""Three readers of messages that are not ours. Each gives a dictionary of one shape for a message file."""
import base64
import email
import email.policy
import hashlib
import json
import os
import shutil
import subprocess
from email.header import decode_header
from email.utils import getaddresses
from pathlib import Path

HERE = Path(__file__).parent


def words(value):
    return "".join(piece if isinstance(piece, str) else piece.decode(charset or "ascii")
                   for piece, charset in decode_header(value))


def mailbox(message, field):
    """By the older policy: the newer one leaves the blanks between encoded words of a name in."""
    found = getaddresses(message.get_all(field, []))
    try:
        return [words(found[0][0]), found[0][1], len(found)] if found else None
    except LookupError:  # a set that is not known here
        return [None, found[0][1], len(found)]


def file_name(part):
    """By both policies, which choose among parameters in ways of their own; by the older one as its users decode it."""
    newer, older = part.get_filename(), email.message_from_bytes(part.as_bytes()).get_filename()
    return newer if older is None or words(older) == newer else f"{newer} or {older}"


def python_part(part):
    octets = part.get_payload(decode=True)
    row = {"type": part.get_content_type(), "charset": part.get_param("charset"), "sha256": hashlib.sha256(octets).hexdigest(),
           "disposition": part.get_content_disposition(), "file_name": file_name(part),
           "content_id": part["Content-ID"] and part["Content-ID"].strip("<>")}
    if row["type"].startswith("text/") and not row["disposition"]:
        row["octets"] = base64.b64encode(octets).decode()
        try:
            row["text"] = part.get_content()
        except LookupError:
            row["text"] = None
    return row


def read_by_python(files):
    for file in files:
        raw = Path(file).read_bytes()
        message = email.message_from_bytes(raw, policy=email.policy.default)
        older = email.message_from_bytes(raw)
        parts = [python_part(part) for part in message.walk() if not part.is_multipart()]
        defects = [repr(defect) for part in message.walk() for defect in part.defects]
        yield {"file": file, "subject": str(message["Subject"]), "from": mailbox(older, "From"), "to": mailbox(older, "To"),
               "parts": parts, "defects": defects}


def read_by(command, files):
    done = subprocess.run(command, input="".join(f"{file}\n" for file in files), capture_output=True, text=True, timeout=600)
    assert done.returncode == 0, done.stderr
    return [json.loads(line) for line in done.stdout.splitlines()]


class OutOfReach(Exception):
    """A reader cannot be had here; the text says why."""


# What npm says when nobody answers; everything else that it says is a fault of ours.
NO_ANSWER = ("ENOTFOUND", "EAI_AGAIN", "ECONNREFUSED", "ECONNRESET", "ETIMEDOUT", "ENETUNREACH", "EHOSTUNREACH",
             "ERR_SOCKET_TIMEOUT", "FETCH_ERROR")


def install_mailparser(folder):
    """As the lock file says; anew only when that file changed. Asks the registry once, for some seconds."""
    lock = folder / "package-lock.json"
    if (folder / "installed").exists() and lock.read_bytes() == (HERE / lock.name).read_bytes():
        return
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "installed").unlink(missing_ok=True)
    for name in ("package.json", "package-lock.json"):
        shutil.copy(HERE / name, folder)
    try:
        npm = subprocess.run(["npm", "ci", "--ignore-scripts", "--no-audit", "--no-fund", "--prefer-offline",
                              "--fetch-retries=0", "--fetch-timeout=15000"], cwd=folder, timeout=120, capture_output=True,
                             text=True)
    except FileNotFoundError as error:
        raise OutOfReach("npm is not installed") from error
    except subprocess.TimeoutExpired as error:
        raise OutOfReach("the npm registry did not answer in time") from error
    if npm.returncode != 0 and any(word in npm.stderr for word in NO_ANSWER):
        raise OutOfReach("the npm registry cannot be reached")
    assert npm.returncode == 0, npm.stderr
    (folder / "installed").touch()


MAILPARSER_FOLDER = Path(os.environ.get("QUILLCAST_READERS_FOLDER", "build/readers"))


def read_by_mailparser(files):
    os.environ["NODE_PATH"] = str(MAILPARSER_FOLDER.resolve() / "node_modules")
    return read_by(["node", str(HERE / "mailparser_reader.js")], files)


def read_by_gmime(files):
    return read_by([os.environ.get("QUILLCAST_GMIME_READER", "build/release/bin/gmime_reader")], files)


def readers(left_out):
    """The readers that can be had here; `left_out` is told of one that cannot, and why."""
    found = {"python": read_by_python, "gmime": read_by_gmime}
    try:
        install_mailparser(MAILPARSER_FOLDER)
        found["mailparser"] = read_by_mailparser
    except OutOfReach as reason:
        left_out("the reader mailparser", reason)
    return found
