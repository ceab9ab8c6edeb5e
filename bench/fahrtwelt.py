"""A trip to be measured: the built programs, the real adb and the simulated phone, on a loopback of its own."""

import ctypes
import fcntl
import os
import pathlib
import re
import signal
import socket
import struct
import subprocess
import tempfile
import time

QUELLE = pathlib.Path(__file__).resolve().parent.parent
BIN = QUELLE / "bau/release/bin"
CLONE_NEWNET = 0x40000000
SIOCSIFFLAGS = 0x8914
CPUCLOCK_SCHED = 2


def eigenes_netz():
    """For the whole process. False: the system gives none, and only one trip at a time is possible."""
    if ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNET) != 0:
        return False
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as buchse:
        fcntl.ioctl(buchse, SIOCSIFFLAGS, struct.pack("16sh", b"lo", 1))
    return True


def freier_port():
    with socket.socket() as buchse:
        buchse.bind(("127.0.0.1", 0))
        return buchse.getsockname()[1]


def warte_bis(bedingung, sekunden=30, schritt=0.01):
    """Seconds until it held."""
    anfang = time.monotonic()
    while not bedingung():
        if time.monotonic() - anfang > sekunden:
            raise TimeoutError(f"nach {sekunden} s immer noch nicht: {bedingung.__name__}")
        time.sleep(schritt)
    return time.monotonic() - anfang


def lies(pfad):
    try:
        return pathlib.Path(pfad).read_text(encoding="utf-8")
    except FileNotFoundError:
        return ""


def rechenzeit(nummer):
    """Seconds that a process computed, and those of its children that have ended."""
    felder = lies(f"/proc/{nummer}/stat").rpartition(")")[2].split()
    return time.clock_gettime(~nummer << 3 | CPUCLOCK_SCHED), sum(map(int, felder[13:15])) / os.sysconf("SC_CLK_TCK")


def wartungen(nummer):
    """How often its threads have waited for anything so far, however shortly."""
    faeden = pathlib.Path(f"/proc/{nummer}/task").iterdir()
    return sum(int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", lies(f / "status"), re.M)[1]) for f in faeden)


def weckungen(nummer, sekunden, was=time.sleep):
    """How often per second one of its threads was woken that had slept for longer than a tool takes to answer, in
    whatever call of the system; meanwhile `was` is done. The tools themselves are not watched: that would slow them.
    Their ends interrupt only a process that is watched: otherwise the system throws that signal away."""
    faeden = [wort for f in pathlib.Path(f"/proc/{nummer}/task").iterdir() for wort in ("-p", f.name)]
    with tempfile.NamedTemporaryFile() as spur:
        beobachter = subprocess.Popen(["strace", "-T", "-o", spur.name, *faeden], stderr=subprocess.DEVNULL)
        try:
            was(sekunden)
            if beobachter.poll() is not None:
                raise RuntimeError("strace darf dem Programm nicht zusehen (dazu muss man root sein)")
        finally:
            beobachter.terminate()
            beobachter.wait()
        geweckt = [zeile for zeile in lies(spur.name).splitlines() if " EINTR " not in zeile]
        return sum(float(s) >= 0.05 for s in re.findall(r"<(\d+\.\d+)>$", "\n".join(geweckt), re.M)) / sekunden


def speicher(nummer):
    """Resident and private memory in millions of bytes."""
    text = lies(f"/proc/{nummer}/smaps_rollup")
    zahl = lambda name: int(re.search(rf"^{name}:\s*(\d+)", text, re.M)[1]) * 1024 / 1e6
    return zahl("Rss"), zahl("Private_Clean") + zahl("Private_Dirty")


class Fahrt:
    """Used with „with“: however it is left, nothing of it goes on running."""

    def __init__(self, *optionen):
        self.programm = self.handy = None
        self.ablage = tempfile.TemporaryDirectory(prefix="messung-")
        self.ordner = pathlib.Path(self.ablage.name)
        self.heim, self.mac = self.ordner / "heim", self.ordner / "mac"
        self.umgebung = os.environ | {"ANDROID_ADB_SERVER_PORT": str(freier_port()), "TZ": "Europe/Berlin"}
        self.adb = self.mac / "opt/homebrew/bin/adb"
        try:
            self.baue_auf(optionen)
        except BaseException:
            self.ende()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.ende()

    def baue_auf(self, optionen):
        subprocess.run([QUELLE / "probe/mac/aufbauen", self.mac], check=True)
        vorlieben = self.heim / "Library/Preferences/de.mobilsteg.bordlotse.json"
        vorlieben.parent.mkdir(parents=True)
        vorlieben.write_text('{"profil": "reise", "austritt.dienst": "http://austritt.probe/"}')
        subprocess.run([self.adb, "start-server"], env=self.umgebung, check=True, stderr=subprocess.DEVNULL)
        ausgabe = self.ordner / "handy.log"
        self.handy = subprocess.Popen(
            [BIN / "mobilsteg-probehandy", "--port", "0", "--steuerport", "0", "--ordner", self.ordner / "handy",
             "--adb-server", self.umgebung["ANDROID_ADB_SERVER_PORT"], *optionen],
            stdin=subprocess.DEVNULL, stdout=ausgabe.open("wb"), stderr=subprocess.STDOUT)
        warte_bis(lambda: "steuerung" in lies(ausgabe))
        self.steuerport = re.search(r"steuerung 127\.0\.0\.1:(\d+)", lies(ausgabe))[1]

    def starte(self, fenster=False):
        """Seconds until the first state is written."""
        standdatei = self.heim / "Library/Application Support/Mobilsteg Bordlotse/stand.json"
        standdatei.unlink(missing_ok=True)
        self.standdatei = standdatei
        worte = [BIN / "mobilsteg-bordlotse", "--heim", self.heim, "--wurzel", self.mac]
        self.programm = subprocess.Popen(
            worte if fenster else [*worte, "--terminal"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, env=self.umgebung | {"QT_QPA_PLATFORM": "offscreen"})
        return warte_bis(lambda: lies(standdatei), schritt=0.002)

    def sage(self, *worte):
        subprocess.run([BIN / "mobilsteg-probehandy", "--sage", self.steuerport, *worte], check=True,
                       stdout=subprocess.DEVNULL)

    def phase(self):
        treffer = re.search(r'"phase": "([^"]*)', lies(self.standdatei))
        return treffer[1] if treffer else ""

    def faehrt(self):
        return self.phase().startswith("Fährt mit")

    def proxy_aus(self):
        return "\ton\t" not in lies(self.mac / "zustand/socks")

    def toete(self):
        self.programm.kill()
        self.programm.wait()

    def ende(self):
        """The program's last clean-up needs the adb server. Who interrupts twice must not interrupt this."""
        for zeichen in (signal.SIGINT, signal.SIGTERM):
            signal.signal(zeichen, signal.SIG_IGN)
        if self.programm and self.programm.poll() is None:
            self.programm.terminate()
            try:
                self.programm.wait(30)
            except subprocess.TimeoutExpired:
                self.toete()
        if self.adb.exists():
            subprocess.run([self.adb, "kill-server"], env=self.umgebung, check=False, stderr=subprocess.DEVNULL)
        if self.handy:
            self.handy.kill()
            self.handy.wait()
        self.ablage.cleanup()
