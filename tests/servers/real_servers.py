"""Postfix, OpenSMTPD and Exim on loopback ports, each with a configuration of the test's own, delivering into maildirs.

They exclude each other as packages, so they are unpacked side by side and started in a namespace of mounts in which the
unpacked files lie over those of the system: nothing is installed, nothing of the system is changed, and every process
ends with the namespace, which ends with the test. The shell stays its first process: a server that changes its user would
no longer be told that its parent has gone. That takes root, and a package archive that can be reached; Unavailable says which is missing.
"""
import os
import shutil
import socket
import ssl
import subprocess
import time
from pathlib import Path

USER, PASSWORD = "ada", "pa ss=word\\\"'"
MAILBOXES = [f"user{number}" for number in range(1000)]
MAIL_UID = 12345
# What the distribution's packages would add.
ACCOUNTS = {"postfix": 12346, "postdrop": 12347, "opensmtpd": 12348, "opensmtpq": 12349, "Debian-exim": 12350,
            "vmail": MAIL_UID}
ENTER = """
set -e
mount -t overlay overlay -o lowerdir="$ROOT/usr:/usr" /usr
mount -t overlay overlay -o lowerdir="$ROOT/etc:/etc" /etc
for folder in /var/spool /var/lib /var/log /run; do mount -t tmpfs tmpfs "$folder"; done
chmod 755 /var/spool /var/lib /var/log /run
"""


class Unavailable(Exception):
    """A server cannot be had here; the text says why."""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def unpack(packages, cache, root):
    """The packages' files below `root`; what was downloaded stays in `cache`."""
    cache.mkdir(parents=True, exist_ok=True)
    for package in packages:
        found = list(cache.glob(f"{package}_*.deb"))
        if not found:
            got = subprocess.run(["apt-get", "download", package], cwd=cache, capture_output=True, text=True)
            found = list(cache.glob(f"{package}_*.deb"))
            if not found:
                raise Unavailable(f"the package {package} cannot be downloaded: {got.stderr.strip().splitlines()[-1:]}")
        subprocess.run(["dpkg", "-x", found[0], root], check=True)


class Server:
    packages = ()
    ways_in = ()  # beside the plain ones
    tls_may_fail = False
    def __init__(self, cache, folder, certificate, key):
        if os.geteuid() != 0:
            raise Unavailable("starting mail servers takes root")
        self.folder, self.certificate, self.key = Path(folder), certificate, key
        self.root = self.folder / "root"
        self.mail = self.folder / "mail"
        self.log = self.folder / "log"
        self.port, self.tls_port = free_port(), free_port()
        unpack(self.packages, Path(cache), self.root)
        self.mail.mkdir()
        os.chown(self.mail, MAIL_UID, MAIL_UID)
        for path in (self.folder, *self.folder.parents):
            if path.stat().st_uid == os.geteuid() and str(path).startswith(("/tmp/", "/dev/shm/")):
                path.chmod(0o755)  # the server's users walk through it
        etc = self.root / "etc"
        for name, line in (("passwd", "{0}:x:{1}:{1}::/nonexistent:/usr/sbin/nologin"), ("group", "{0}:x:{1}:")):
            lines = [line.format(account, number) for account, number in ACCOUNTS.items()]
            (etc / name).write_text(Path("/etc", name).read_text().rstrip("\n") + "\n" + "\n".join(lines) + "\n")
        self.start(self.configure(etc))

    def start(self, command):
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "KILL", "unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", "--propagation", "private", "bash",
                 "-c", f"{ENTER}{command}\nexit $?"], env=dict(os.environ, ROOT=str(self.root)), stdin=subprocess.DEVNULL, stdout=log,
                stderr=subprocess.STDOUT)
        for _ in range(600):
            try:
                with socket.create_connection(("127.0.0.1", self.tls_port), 1):
                    with socket.create_connection(("127.0.0.1", self.port), 1) as plain:
                        if plain.recv(4).startswith(b"220"):
                            return
            except OSError:
                pass
            if self.process.poll() is not None:
                break
            time.sleep(0.1)
        said = self.log.read_text()[-1500:]
        self.close()
        raise Unavailable(f"{self.name} did not start: {said}")

    def tls_works(self):
        """Whether another client than ours can speak TLS with it."""
        context = ssl.create_default_context(cafile=self.certificate)
        try:
            with socket.create_connection(("127.0.0.1", self.tls_port), 10) as plain:
                with context.wrap_socket(plain, server_hostname="127.0.0.1") as wrapped:
                    return wrapped.recv(4).startswith(b"220")
        except OSError:
            return False

    def delivered(self, count, patience=120):
        """[(recipient's local part, bytes)] once so many are there, or what is there when the patience is over."""
        deadline = time.monotonic() + patience
        while True:
            files = [file for folder in self.mail.iterdir() for file in (folder / "new").glob("*")]
            if len(files) >= count or time.monotonic() > deadline:
                time.sleep(0.3)  # a second copy would come now
                files = [file for folder in self.mail.iterdir() for file in (folder / "new").glob("*")]
                return [(file.parent.parent.name, file.read_bytes()) for file in files]
            time.sleep(0.2)

    def forget(self):
        for folder in self.mail.iterdir():
            shutil.rmtree(folder)

    def close(self):
        self.process.kill()
        self.process.wait()
        for _ in range(100):  # until the last process of the namespace is gone
            shutil.rmtree(self.folder, ignore_errors=True)
            if not self.folder.exists():
                return
            time.sleep(0.1)
        raise OSError(f"{self.folder} cannot be removed")


class Postfix(Server):
    name = "Postfix"
    packages = ("postfix", "libsasl2-modules", "libsasl2-modules-db", "sasl2-bin")
    ways_in = ("CRAM MD5", "NTLM")

    def configure(self, etc):
        folder = etc / "postfix"
        main = f"""
compatibility_level = 3.6
queue_directory = /var/spool/postfix
data_directory = /var/lib/postfix
myhostname = postfix.example
mynetworks = 127.0.0.0/8
mydestination =
maillog_file = {self.log}.postfix
maillog_file_prefixes = {self.folder}
smtpd_peername_lookup = no
smtpd_client_connection_rate_limit = 0
virtual_mailbox_domains = example.org
virtual_mailbox_base = {self.mail}
virtual_mailbox_maps = texthash:/etc/postfix/mailboxes
virtual_uid_maps = static:{MAIL_UID}
virtual_gid_maps = static:{MAIL_UID}
virtual_minimum_uid = 1000
smtpd_tls_chain_files = {self.key}, {self.certificate}
smtpd_tls_security_level = may
smtpd_sasl_auth_enable = yes
smtpd_sasl_type = cyrus
smtpd_sasl_path = smtpd
cyrus_sasl_config_path = /etc/postfix/sasl
smtpd_sasl_local_domain = postfix.example
smtpd_sasl_security_options = noanonymous
alias_maps =
smtputf8_enable = yes
"""
        (folder / "main.cf").write_text(main)
        (folder / "mailboxes").write_text("".join(f"{user}@example.org {user}/\n" for user in MAILBOXES))
        (folder / "sasl").mkdir(exist_ok=True)
        (folder / "sasl" / "smtpd.conf").write_text(
            "pwcheck_method: auxprop\nauxprop_plugin: sasldb\nsasldb_path: /var/lib/sasldb2\n"
            "mech_list: PLAIN LOGIN CRAM-MD5 SCRAM-SHA-1 SCRAM-SHA-256 NTLM\n")
        (folder / "password").write_text(PASSWORD)
        services = f"127.0.0.1:{self.port} inet n - n - - smtpd\n"
        services += (f"127.0.0.1:{self.tls_port} inet n - n - - smtpd\n  -o smtpd_tls_wrappermode=yes\n"
                     "  -o smtpd_client_restrictions=permit_sasl_authenticated,reject\n")
        for line in ("pickup unix n - n 60 1 pickup", "cleanup unix n - n - 0 cleanup", "qmgr unix n - n 300 1 qmgr",
                     "rewrite unix - - n - - trivial-rewrite", "bounce unix - - n - 0 bounce",
                     "defer unix - - n - 0 bounce", "tlsmgr unix - - n 1000? 1 tlsmgr", "error unix - - n - - error",
                     "virtual unix - n n - - virtual", "anvil unix - - n - 1 anvil", "proxymap unix - - n - - proxymap",
                     "postlog unix-dgram n - n - 1 postlogd", "flush unix n - n 1000? 0 flush"):
            services += line + "\n"
        (folder / "master.cf").write_text(services)
        return f"""
mkdir -p /var/spool/postfix /var/lib/postfix
chown postfix /var/lib/postfix
saslpasswd2 -p -c -u postfix.example -f /var/lib/sasldb2 {USER} </etc/postfix/password
chown postfix /var/lib/sasldb2
postfix set-permissions create-missing >/dev/null 2>&1 || true
postfix check
postfix start-fg
"""


class OpenSmtpd(Server):
    name = "OpenSMTPD"
    tls_may_fail = True  # some packages of it fail with every client, for their own keys
    packages = ("opensmtpd",)

    def configure(self, etc):
        hashed = subprocess.run(["openssl", "passwd", "-6", "-stdin"], input=PASSWORD, text=True, capture_output=True,
                                check=True).stdout.strip()
        (etc / "smtpd.users").write_text(f"{USER} {hashed}\n")
        (etc / "smtpd.mailboxes").write_text("@example.org vmail\n")
        (etc / "smtpd.conf").write_text(f"""
pki here cert "{self.certificate}"
pki here key "/etc/smtpd.key"
table users file:/etc/smtpd.users
table mailboxes file:/etc/smtpd.mailboxes
smtp max-message-size "100M"
listen on lo port {self.port} tls pki here hostname opensmtpd.example
listen on lo port {self.tls_port} smtps pki here auth <users> hostname opensmtpd.example
action "keep" maildir "{self.mail}/%{{rcpt.user}}" virtual <mailboxes>
match from any for domain "example.org" action "keep"
""")
        shutil.copy(self.key, etc / "smtpd.key")
        (etc / "smtpd.key").chmod(0o600)
        return "mkdir -p /var/lib/opensmtpd/empty /var/empty; smtpd -d -f /etc/smtpd.conf"


class Exim(Server):
    name = "Exim"
    packages = ("exim4-daemon-light", "exim4-base")
    ways_in = ("CRAM MD5",)

    def configure(self, etc):
        (etc / "exim4").mkdir(exist_ok=True)
        for file in (self.certificate, self.key):
            shutil.copy(file, etc / "exim4" / Path(file).name)
            (etc / "exim4" / Path(file).name).chmod(0o644)
        password = PASSWORD.replace("\\", "\\\\").replace('"', '\\"')
        (etc / "exim4" / "exim4.conf").write_text(f"""
primary_hostname = exim.example
local_interfaces = 127.0.0.1
daemon_smtp_ports = {self.port} : {self.tls_port}
tls_on_connect_ports = {self.tls_port}
tls_advertise_hosts = *
tls_certificate = /etc/exim4/{Path(self.certificate).name}
tls_privatekey = /etc/exim4/{Path(self.key).name}
pipelining_advertise_hosts = *
chunking_advertise_hosts = *
smtp_accept_max_per_connection = 200
smtp_accept_queue_per_connection = 0
smtp_accept_max_nonmail = 10000
queue_only = true
queue_run_max = 2
message_size_limit = 100M
acl_smtp_rcpt = check_rcpt
acl_smtp_data = accept
log_file_path = /var/log/exim4/%slog
keep_environment =
begin acl
check_rcpt:
  deny condition = ${{if eq {{$received_port}}{{{self.tls_port}}}}}
       !authenticated = *
  accept domains = example.org
  deny
begin routers
all:
  driver = accept
  local_parts = lsearch;/etc/exim4/mailboxes
  transport = keep
begin transports
keep:
  driver = appendfile
  directory = {self.mail}/$local_part_data
  maildir_format
  create_directory
  user = vmail
  group = vmail
  return_path_add = false
  delivery_date_add = false
  envelope_to_add = false
begin retry
begin authenticators
plain:
  driver = plaintext
  public_name = PLAIN
  server_condition = ${{if and {{{{eq{{$auth2}}{{{USER}}}}}{{eq{{$auth3}}{{THE_PASSWORD}}}}}}}}
  server_set_id = $auth2
login:
  driver = plaintext
  public_name = LOGIN
  server_prompts = <| Username: | Password:
  server_condition = ${{if and {{{{eq{{$auth1}}{{{USER}}}}}{{eq{{$auth2}}{{THE_PASSWORD}}}}}}}}
  server_set_id = $auth1
cram:
  driver = cram_md5
  public_name = CRAM-MD5
  server_secret = THE_PASSWORD
  server_set_id = $auth1
""".replace("THE_PASSWORD", password))
        (etc / "exim4" / "mailboxes").write_text("".join(f"{user}: {user}\n" for user in MAILBOXES))
        return """
mkdir -p /var/spool/exim4 /var/log/exim4
chown Debian-exim:Debian-exim /var/spool/exim4 /var/log/exim4
exim4 -bdf -q1s
"""


ALL = (Postfix, OpenSmtpd, Exim)
