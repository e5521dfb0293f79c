"""A running publisher for the tests of its page and for the manual's pictures: zebd on a temporary data folder,
a playout's connection that feeds it, and servers for its outputs."""

import http.server
import os
import pathlib
import random
import shutil
import socket
import subprocess
import tempfile
import threading
import time

START_SECONDS = 30


def free_port():
    """One below those that the system gives to whoever connects, so that no connection takes it meanwhile."""
    while True:
        port = random.randrange(27200, 32700)
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) != 0:
                return port


def free_control():
    """A control port number whose TCP port, 6900 + it, is free now."""
    for number in range(200 + os.getpid() % 500, 900):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", 6900 + number)) != 0:
                return number
    raise RuntimeError("no control port is free")


class Taker:
    """An HTTP server that takes every request; it can be stopped and started again on its port."""

    def __init__(self):
        self.port = free_port()
        self.targets = []
        self.server = None

    def start(self):
        targets = self.targets

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                targets.append(self.path)
                self.send_response(204)
                self.end_headers()

            def log_message(self, *arguments):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", self.port), Handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def stop(self):
        if self.server:
            self.server.shutdown()
            self.server.server_close()
            self.server = None


class Station:
    def __init__(self, programs, name="Demo FM"):
        self.programs = pathlib.Path(programs).resolve()
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="zeb-page-"))
        self.port = free_port()
        self.control = free_control()
        self.taker = Taker()
        self.process = None
        self.playout = None
        self.settings("", DashboardPort=self.port, NumberServices="1", RetrySeconds=1)
        self.settings("Service1", ServiceName=name, TolvanTCPControlPort=self.control, InstantUpdate=1)

    def zebctl(self, *arguments, text=None):
        done = subprocess.run([self.programs / "zebctl", "--home", self.home, *arguments], input=text,
                              capture_output=True, text=True, timeout=60)
        if done.returncode != 0:
            raise RuntimeError(f"zebctl {arguments}: {done.stderr}")
        return done.stdout

    def settings(self, key, **values):
        for name, value in values.items():
            number = ["--number"] if isinstance(value, int) else []
            self.zebctl("settings", "set", key, name, str(value), *number)

    def add_file(self, template="<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>\n"):
        (self.home / "now.template").write_text(template)
        self.settings("Service1\\File", NumberOutputs="1")
        for name, value in {"NumberFiles": "1", "SourceFileName1": "now.template",
                            "DestinationFileName1": "now.txt"}.items():
            self.zebctl("settings", "set", "Service1\\File", "Output1." + name, value)

    def add_http(self):
        self.taker.start()
        self.settings("Service1\\HTTPRequest", NumberOutputs="1", ServerPort1=self.taker.port, URL1="/now",
                      SimpleTextFormat1="?t=<ZEB_NOW_ITEMNAME>")

    def page(self):
        return self.home / "now.txt"

    def url(self):
        return f"http://127.0.0.1:{self.port}/"

    def start(self):
        self.journal = open(self.home / "journal", "wb")
        self.process = subprocess.Popen([self.programs / "zebd", "--home", self.home], stderr=self.journal)
        self.await_(lambda: b"is ready" in (self.home / "journal").read_bytes(), "zebd to be ready")

    def connect(self):
        self.playout = socket.create_connection(("127.0.0.1", 6900 + self.control), timeout=10)
        self.send("NET_CONTROL_LOGON Studio 1")
        self.await_(lambda: b"NET_CONTROL_GRANTED" in self.playout.recv(4096), "control")

    def send(self, *lines):
        self.playout.sendall("".join(line + "\r\n" for line in lines).encode())

    def song(self, title, artist):
        self.send(f'SET_CURRENT_ITEM IType=7 ITitle="{title}" AName1="{artist}"')

    @staticmethod
    def await_(condition, what, seconds=START_SECONDS):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(f"waited {seconds} s for {what}")
            time.sleep(0.005)

    def stop(self):
        """Ends zebd; its exit status."""
        if self.playout:
            self.playout.close()
            self.playout = None
        self.process.terminate()
        status = self.process.wait(timeout=30)
        self.process = None
        self.journal.close()
        return status

    def close(self):
        if self.process:
            self.stop()
        self.taker.stop()
        shutil.rmtree(self.home, ignore_errors=True)
