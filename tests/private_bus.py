"""A D-Bus of a test's own. Nothing that is started with it knows another one."""
import os
import shutil
import subprocess
import tempfile
from pathlib import Path


def begin(case):
    """(folder, address): both go with the test case. This process, too, knows no other bus afterwards."""
    folder = Path(tempfile.mkdtemp(prefix="quillcast-test-", dir="/tmp"))
    case.addCleanup(shutil.rmtree, folder, ignore_errors=True)
    bus = f"unix:path={folder}/bus"
    config = folder / "bus.conf"
    config.write_text(f'<busconfig><listen>{bus}</listen><policy context="default">'
                      '<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>'
                      '</policy></busconfig>')
    daemon = subprocess.Popen(["dbus-daemon", "--nofork", "--print-address", f"--config-file={config}"],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    case.addCleanup(daemon.stdout.close)
    case.addCleanup(daemon.wait, 10)
    case.addCleanup(daemon.terminate)
    os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus
    case.assertTrue(daemon.stdout.readline().startswith(bus), "no bus of the test's own")
    return folder, bus
