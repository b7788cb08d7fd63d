"""Postfix's programs for measuring, taken out of the distribution's package; nothing is installed."""
import glob
import os
import subprocess


def unpack(folder):
    """Returns the folder of the programs and the environment that they need."""
    subprocess.run(["apt-get", "download", "postfix"], cwd=folder, check=True, capture_output=True)
    package = glob.glob(os.path.join(folder, "postfix_*.deb"))[0]
    subprocess.run(["dpkg", "-x", package, folder], check=True)
    environment = dict(os.environ, LD_LIBRARY_PATH=os.path.join(folder, "usr/lib/postfix"))
    return os.path.join(folder, "usr/sbin"), environment
