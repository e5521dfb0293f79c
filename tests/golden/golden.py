#!/usr/bin/python3
"""The same item messages give the same bytes on every system: a station with all kinds of outputs, published to real servers, and
all that arrives there compared with expected/.

    golden.py                 zebd and zebctl of $ZEB_PROGRAMS (build/dev)
    golden.py --wine          zebd.exe and zebctl.exe of build/windows, under Wine ($WINEPREFIX)
    golden.py --write         writes expected/ anew: to be looked at before it is committed

Then the servers go away during an item and come back: pages do not wait for them, and they get the item.
"""

import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

from peers import Dab, Ftp, Http, Page, Serial, Stream, Wrong, connects, folder_of, free_port, missing, until

HERE = folder_of(__file__).parent
TREE = HERE.parent.parent
PNG = bytes.fromhex("89504e470d0a1a0a0000000d4948445200000001000000010802000000907753de0000000c4944415408d763f8cfc0000003010100"
                    "18dd8db00000000049454e44ae426082")


class Native:
    """The programs as they are."""

    def __init__(self):
        self.programs = folder_of(os.environ.get("ZEB_PROGRAMS", TREE / "build/dev"))

    def command(self, program):
        return [self.programs / program]

    def path(self, path):
        return str(path)

    def serial_line(self, device):
        return device

    def end(self, process):
        process.send_signal(signal.SIGTERM)

    def finish(self):
        pass


class Wine:
    """The programs for Windows, with settings in the prefix's registry."""

    key = r"HKLM\Software\WOW6432Node\Hexmoor"

    def __init__(self):
        self.programs = folder_of(os.environ.get("ZEB_WINDOWS_PROGRAMS", TREE / "build/windows"))
        if "WINEPREFIX" not in os.environ:
            raise Wrong("WINEPREFIX names no prefix of its own")

    def run(self, *words):
        return subprocess.run(["timeout", "120", *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode

    def command(self, program):
        return ["wine", self.programs / f"{program}.exe"]

    def path(self, path):
        return "Z:" + str(path).replace("/", "\\")

    def serial_line(self, device):
        """COM1; Wine looks at its ports when it starts."""
        self.run("wine", "reg", "add", r"HKLM\Software\Wine\Ports", "/v", "COM1", "/d", device, "/f")
        self.run("wineserver", "-k")
        self.run("wineserver", "-w")
        self.run("wineserver", "-p")
        self.run("wine", "cmd", "/c", "exit")
        self.run("wine", "reg", "delete", self.key, "/f")
        return ""

    def end(self, process):
        # Wine's own process is asked by nobody; the program is ended as by the task manager.
        process.kill()

    def finish(self):
        self.run("wine", "reg", "delete", self.key, "/f")
        self.run("wineserver", "-k")


def item_parts():
    """The messages of each part of `items` as bytes, with the word by which it is seen."""
    text = (HERE / "items").read_bytes()
    lines = [line for line in text.split(b"\n") if not line.startswith(b"#")]
    for part in b"\n".join(lines).strip().split(b"\n\n"):
        part = re.sub(rb"\\x([0-9a-f]{2})", lambda escape: bytes([int(escape[1], 16)]), part).replace(rb"\\", b"\\")
        word = re.search(rb'ITitle="([A-Z]{3,})', part)
        yield word[1], part.replace(b"\n", b"\r\n") + b"\r\n"


class Station:
    """A zebd with its data folder, settings and peers."""

    def __init__(self, system, folder):
        self.system, self.folder = system, folder
        self.home = folder / "home"
        (self.home / "www").mkdir(parents=True)
        shutil.copytree(HERE / "templates", self.home / "templates")
        shutil.copy(TREE / "examples/Carts.csv", self.home)
        (self.home / "cover.png").write_bytes(PNG)
        labels = folder_of(os.environ.get("ZEB_PROGRAMS", TREE / "build/dev")) / "zeb-labelserver"
        self.serial = Serial()
        self.peers = {"ftp": Ftp(folder), "http": Http(folder), "stream": Stream(folder), "dab": Dab(folder, labels)}
        self.places = {**{name: Page(self.home / "www" / name) for name in ("now.txt", "now.html", "now.xml", "now.json")},
                       **self.peers, "serial": self.serial}
        self.control = free_port(27000 + os.getpid() % 5000)  # others look for theirs from below
        self.journal = folder / "journal"
        self.process = self.line = None

    def run(self, program, *words):
        done = subprocess.run([*self.system.command(program), "--home", self.system.path(self.home), *words],
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=120, check=False)
        if done.returncode:
            raise Wrong(f"{program} {' '.join(words)}: {done.stderr.decode(errors='replace')}")

    def set_up(self):
        text = (HERE / "station.reg").read_text(encoding="utf-8")
        values = {"SERIAL": self.system.serial_line(self.serial.device), "CONTROL": f"{self.control - 6900:x}",
                  "FTP": self.peers["ftp"].port, "HTTP": f"{self.peers['http'].port:x}",
                  "STREAM": f"{self.peers['stream'].port:x}", "DAB": self.peers["dab"].port}
        for name, value in values.items():
            text = text.replace(f"@{name}@", str(value))
        (self.home / "station.reg").write_text(text, encoding="utf-8")
        self.run("zebctl", "settings", "import", self.system.path(self.home / "station.reg"))

    def start(self):
        with open(self.journal, "ab") as journal:
            self.process = subprocess.Popen([*self.system.command("zebd"), "--home", self.system.path(self.home)],
                                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=journal)
        until(60, "zebd listens", lambda: connects(self.control))
        self.line = socket.create_connection(("127.0.0.1", self.control))
        self.line.sendall(b"NET_CONTROL_LOGON Golden\r\n")

    def await_word(self, word, names, seconds=30):
        """What each of the places has got of the present item, once all have it."""
        def without():
            return [name for name in names if word not in self.places[name].received()]
        try:
            until(seconds, "all have it", lambda: not without())
        except Wrong:
            raise Wrong(f"{', '.join(without())}: no {word.decode()} within {seconds} s") from None
        return {name: self.places[name].received() for name in names}

    def end(self):
        if self.process:
            self.system.end(self.process)
            self.process.wait(20)
        for peer in self.peers.values():
            peer.stop()


def without_time(arrived):
    """A web page says when it was written, with the date in the system's words."""
    return re.sub(rb"(updated this file\.\.\.)\d\d:\d\d:\d\d \w[^\r]*( -->)", rb"\1TIME\2", arrived)


def play_all(station):
    """What arrived, by place: the parts one after another, with a line that names each."""
    got = {name: b"" for name in station.places}
    before = dict(got)
    for word, messages in item_parts():
        station.line.sendall(messages)
        arrived = station.await_word(word, station.places)
        for name, all_bytes in arrived.items():
            # A log or a line has what came before, too.
            kept = all_bytes[len(before[name]):] if name in ("http", "serial") else all_bytes
            got[name] += b"--- " + word + b"\n" + without_time(kept) + (b"" if kept.endswith(b"\n") else b"\n")
        before = arrived
    got["cover.png"] = (station.home / "www/cover.png").read_bytes()
    return got


def compare(got):
    wrong = 0
    for name, arrived in sorted(got.items()):
        expected = (HERE / "expected" / name).read_bytes()
        if arrived == expected:
            print(f"ok      {name}: {len(arrived)} bytes as expected")
            continue
        wrong += 1
        pairs = zip(arrived.split(b"\n"), expected.split(b"\n"))
        line, difference = next(((i, pair) for i, pair in enumerate(pairs, 1) if pair[0] != pair[1]), (0, ("", "")))
        print(f"WRONG   {name}, line {line}:\n        {difference[0]!r}\n        {difference[1]!r} expected")
    return wrong


def servers_go_and_come_back(station):
    pages = [name for name in station.places if name not in station.peers]
    for peer in station.peers.values():
        peer.stop()
    started = time.monotonic()
    station.line.sendall(b'SET_CURRENT_ITEM IType=7 ITitle="OMEGA" AName1="Alone"\r\n')
    station.await_word(b"OMEGA", pages, 10)
    print(f"ok      without its servers the pages and the serial line have the next item ({time.monotonic() - started:.1f} s)")
    for name in ("Web 1", "HTTP 1", "Encoder 1", "DAB 1"):
        until(30, f"the journal names {name}", lambda: f"{name}: " in station.journal.read_text(errors="replace"))
    for peer in station.peers.values():
        peer.start()
    station.await_word(b"OMEGA", station.peers, 60)
    print("ok      the servers are back and have got it")


def write(got):
    (HERE / "expected").mkdir(exist_ok=True)
    for name, arrived in got.items():
        (HERE / "expected" / name).write_bytes(arrived)


def main():
    arguments = sys.argv[1:]
    if set(arguments) - {"--wine", "--write"}:
        print(__doc__, file=sys.stderr)
        return 2
    if missing():
        raise Wrong(f"{', '.join(missing())}: not installed (scripts/setup test)")
    system = Wine() if "--wine" in arguments else Native()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        folder.chmod(0o755)
        station = Station(system, folder)
        try:
            station.set_up()
            for peer in station.peers.values():
                peer.start()
            station.start()
            got = play_all(station)
            if "--write" in arguments:
                write(got)
            wrong = compare(got)
            servers_go_and_come_back(station)
        except Exception:
            print(station.journal.read_text(errors="replace") if station.journal.exists() else "no journal", file=sys.stderr)
            raise
        finally:
            station.end()
            system.finish()
    print(f"{wrong} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Wrong as problem:
        print(f"golden: {problem}", file=sys.stderr)
        sys.exit(1)
