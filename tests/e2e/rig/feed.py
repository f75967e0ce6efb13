"""An installation that maintains itself, and the server of its updates, with a certificate that the installation trusts."""

import os
import shutil
import threading
from pathlib import Path

import pytest

from .home import needs
from .tls import server_context
from .web import Handler, Server

RELEASE = Path(__file__).parents[3] / "tools/release"
AUTHORITIES = Path("/etc/ssl/certs/ca-certificates.crt")
HOST = "localhost"


class Feed:
    """`asked` are the files that were asked for. While `holds_back` is set, a file stops in its middle."""

    def __init__(self, bed):
        if os.geteuid() != 0:
            pytest.skip("needs root, to have a certificate trusted")
        needs("unshare", "strip")
        feed = self
        self._home = bed.home
        self.asked = []
        self._may_go_on = threading.Event()
        self.hold_back(False)
        self._folder, self._bundle = bed.home.folder / "feed", bed.home.folder / "bundle"
        self.root = bed.home.folder / "app"
        self._key = bed.home.folder / "key"

        class FeedHandler(Handler):
            def do_GET(self):
                feed.asked.append(self.path)
                contents = (feed._folder / Path(self.path).name).read_bytes()
                first = int(self.headers.get("Range", "bytes=0-").strip("bytes=-"))
                kept = contents[first:]
                self.send_response(206 if first else 200)
                if first:
                    self.send_header("Content-Range", f"bytes {first}-{len(contents) - 1}/{len(contents)}")
                self.send_header("Content-Length", str(len(kept)))
                self.end_headers()
                self.wfile.write(kept[:len(kept) // 2])
                feed._may_go_on.wait()
                self.wfile.write(kept[len(kept) // 2:])

        self._server = Server(FeedHandler, context=server_context(bed.home, HOST))
        self._release("keys", self._key)
        self._release("bundle", "--build", Path(bed.binary).parent, "--key", self._key,
                      "--feed", f"https://{HOST}:{self._server.server_port}/update.manifest", self._bundle)
        self._launcher = Path(bed.binary).parent / "quillox-launcher"

    def _release(self, *words):
        self._home.run("/usr/bin/python3", RELEASE, *words)

    def install(self, version):
        self._release("install", "--version", version, "--launcher", self._launcher, self._bundle, self.root)

    def publish(self, version, program=None):
        """Signs and offers a version; `program` is a script in the place of the real one."""
        bundle = self._bundle
        if program:
            bundle = self._home.folder / f"bundle-{version}"
            shutil.copytree(self._bundle, bundle)
            (bundle / "quillox").write_text(program)
        self._release("publish", "--key", self._key, "--version", version, "--feed", self._folder, bundle)

    def hold_back(self, holds):
        self._may_go_on.clear() if holds else self._may_go_on.set()

    def start(self, display, **environment):
        """Starts the launcher in a file system of its own, whose authorities are those of the machine and the feed's."""
        trusted = self._home.folder / "authorities.crt"
        own = self._home.folder / f"{HOST}.pem"
        known = AUTHORITIES.read_text() if AUTHORITIES.exists() else ""
        trusted.write_text(known + own.read_text().partition("-----BEGIN CERTIFICATE-----")[2].join(
            ("-----BEGIN CERTIFICATE-----", "")))
        return self._home.start(
            "unshare", "--mount", "sh", "-ec", 'mount --bind "$1" "$2"; shift 2; exec "$@"', "-", trusted, AUTHORITIES,
            self.root / "quillox", log="quillox", environment={**display.environment, **environment})

    @property
    def current(self):
        return os.readlink(self.root / "current").rpartition("/")[2]

    def end(self):
        self.hold_back(False)
        self._server.end()
