#!/usr/bin/python3
"""A site's folder by the private scheme against the same folder from an nginx of this machine, both
in the sealed program: small files, one big stream, and the memory that the stream takes. README.md
says how to read the result."""

import argparse
import json
import os
import queue
import shutil
import socket
import statistics
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler
from pathlib import Path

from clients import (Client, ClientFailed, Figures, Launcher, add_common_arguments, in_rounds,
                     machine, quillox, reach, reach_lines, run_and_report)
from process_tree import client_processes, read
from stage import MARKER_PICTURE, Server, Stage, marked

SMALL_BYTES = 2048
LANES = 32
BIG, BIG_BYTES = "big.bin", 200_000_000
TINY = "small/0.bin"
SETTLE_SECONDS = 5
DEADLINE_SECONDS = 120
# No task is served from a cache or kept in one, so that every byte takes the way that is measured.
PAGE = """<!DOCTYPE html><meta charset="utf-8"><title>Files</title><body><script>
const tasks = {
    async small({ count, lanes }) {
        let next = 0, bytes = 0;
        const lane = async () => {
            while (next < count) {
                const answer = await fetch(`small/${next++}.bin`, { cache: "no-store" });
                const body = await answer.arrayBuffer();
                bytes += body.byteLength;
            }
        };
        await Promise.all(Array.from({ length: lanes }, lane));
        return bytes;
    },
    async stream({ path }) {
        const reader = (await fetch(path, { cache: "no-store" })).body.getReader();
        let bytes = 0;
        for (let part; !(part = await reader.read()).done;)
            bytes += part.value.length;
        return bytes;
    },
};
async function work() {
    const task = await (await fetch("DESK/task")).json();
    if (task) {
        const begin = performance.now();
        const bytes = await tasks[task.name](task).catch(String);
        const seconds = (performance.now() - begin) / 1000;
        const body = JSON.stringify({ bytes, seconds });
        await fetch("DESK/result", { method: "POST", mode: "no-cors", body });
    }
    setTimeout(work, 50);
}
work();
</script></body>"""


class Desk:
    """Where the page asks for its next task and hands in what came of it."""

    def __init__(self):
        self.tasks: queue.Queue[dict] = queue.Queue()
        self.results: queue.Queue[dict] = queue.Queue()
        desk = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self) -> None:
                try:
                    self.answer(json.dumps(desk.tasks.get_nowait()).encode())
                except queue.Empty:
                    self.answer(b"null")

            def do_POST(self) -> None:
                body = self.rfile.read(int(self.headers["Content-Length"]))
                desk.results.put(json.loads(body))
                self.answer(b"")

            def answer(self, body: bytes) -> None:
                self.send_response(200)
                self.send_header("Content-Length", str(len(body)))
                self.send_header("Access-Control-Allow-Origin", "*")
                self.send_header("Cache-Control", "no-store")
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_) -> None:
                pass

        server = Server(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{server.server_port}"
        threading.Thread(target=server.serve_forever, daemon=True).start()

    def rate(self, expected_bytes: int, **task) -> float:
        """Has the page do the task. Bytes a second."""
        self.tasks.put(task)
        try:
            result = self.results.get(timeout=DEADLINE_SECONDS)
        except queue.Empty:
            raise ClientFailed(f"{task} was not done") from None
        if result["bytes"] != expected_bytes:
            raise ClientFailed(f"{task} gave {result['bytes']} instead of {expected_bytes} bytes")
        return expected_bytes / result["seconds"]


def make_site(folder: Path, count: int, desk: Desk) -> Path:
    site = folder / "site"
    (site / "small").mkdir(parents=True)
    for number in range(count):
        (site / f"small/{number}.bin").write_bytes(os.urandom(SMALL_BYTES))
    block = os.urandom(BIG_BYTES // 200)
    with (site / BIG).open("wb") as file:
        for _ in range(200):
            file.write(block)
    (site / "marker.svg").write_text(MARKER_PICTURE)
    (site / "index.html").write_text(marked(PAGE.replace("DESK", desk.address)))
    return site


NGINX = """{user} worker_processes 1; daemon off; pid {folder}/pid; error_log {folder}/error.log;
events {{ worker_connections 768; }}
http {{
    types {{ text/html html; image/svg+xml svg; }}
    default_type application/octet-stream;
    sendfile on; tcp_nopush on; keepalive_timeout 65; access_log off;
    client_body_temp_path {folder}/body; proxy_temp_path {folder}/proxy;
    fastcgi_temp_path {folder}/fastcgi; uwsgi_temp_path {folder}/uwsgi;
    scgi_temp_path {folder}/scgi;
    server {{ listen 127.0.0.1:{port}; root {site}; }}
}}
"""


class NginxStage(Stage):
    """Its page server is an nginx on the site's folder."""

    def start_server(self) -> None:
        program = shutil.which("nginx", path=f"{os.environ['PATH']}:/usr/sbin")
        if not program:
            raise RuntimeError("nginx is not installed")
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        folder = self.site.parent / "nginx"
        folder.mkdir()
        # Its workers give root up by default, and would not get into the folder.
        user = "user root;" if os.geteuid() == 0 else ""
        configuration = folder / "nginx.conf"
        configuration.write_text(NGINX.format(user=user, folder=folder, port=port, site=self.site))
        self.start([program, "-e", f"{folder}/error.log", "-c", str(configuration)])
        self.address = f"http://127.0.0.1:{port}/"


class Files(Launcher):
    def __init__(self, stage: Stage, folder: Path, desk: Desk, count: int):
        super().__init__(stage, folder)
        self.desk = desk
        self.count = count

    def speeds(self, client: Client) -> Figures:
        with self.showing(client):
            return {"sequential": self.small(1), "parallel": self.small(LANES),
                    "stream": self.stream(BIG, BIG_BYTES) / 1e6}

    def small(self, lanes: int) -> float:
        """Files a second."""
        return self.desk.rate(self.count * SMALL_BYTES, name="small", count=self.count,
                              lanes=lanes) / SMALL_BYTES

    def stream(self, path: str, size: int) -> float:
        return self.desk.rate(size, name="stream", path=path)

    def memory(self, client: Client) -> Figures:
        """MiB that the peaks of a big stream lie over those of a tiny one before it."""
        with self.showing(client):
            time.sleep(SETTLE_SECONDS)  # What starting took is given back.
            tiny = self.peaks(TINY, SMALL_BYTES)
            big = self.peaks(BIG, BIG_BYTES)
            added = {process: (big[process] - tiny[process]) / 1024 for process in tiny}
            return {"program": added[self.leader], "tree": sum(added.values())}

    def peaks(self, path: str, size: int) -> dict[int, int]:
        """The most resident memory of each process while the page streams the file, KiB."""
        processes = client_processes(self.stage.helpers)
        for process in processes:
            Path(f"/proc/{process}/clear_refs").write_text("5")  # The peak begins anew.
        self.stream(path, size)
        return {process: peak_resident(process) for process in processes}


def peak_resident(process: int) -> int:
    for line in (read(f"/proc/{process}/status") or "").splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1])
    raise ClientFailed(f"process {process} went while the page streamed")


TITLES = {"sequential": "small files/s", "parallel": f"{LANES} at once/s", "stream": "stream MB/s",
          "program": "its peak MiB", "tree": "all peaks MiB"}


def column(rounds: list[dict], client: str, figure: str) -> list[float]:
    return [one[client][figure] for one in rounds]


def ratio(rounds: list[dict], figure: str) -> float:
    """The median of the rounds' own ratios, so that slow drift of the machine cancels out."""
    return statistics.median(one["scheme"][figure] / one["nginx"][figure] for one in rounds)


def reaches(speeds: list[dict], memory: list[dict]) -> list[dict]:
    most = max(column(memory, "scheme", "program"))
    return [reach("small files, scheme / nginx", ratio(speeds, "sequential"), ">=", 0.8),
            reach(f"small files, {LANES} at once, scheme / nginx", ratio(speeds, "parallel"), ">=",
                  0.8),
            reach("200 MB stream, scheme / nginx", ratio(speeds, "stream"), ">=", 0.5),
            reach("peak added by the stream, program, MiB", most, "<", 8)]


def report(result: dict) -> str:
    lines = ["", f"{'median (range)':<10}" + "".join(f"{one:>30}" for one in TITLES.values())]
    for client in ("scheme", "nginx"):
        cells = []
        for figure in TITLES:
            values = column(result["rounds"]["memory" if figure in ("program", "tree") else
                                             "speeds"], client, figure)
            cells.append(f"{statistics.median(values):.4g} ({min(values):.4g}-{max(values):.4g})")
        lines.append(f"{client:<10}" + "".join(f"{cell:>30}" for cell in cells))
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "local_scheme")
    parser.add_argument("--rounds", type=int, default=7, help="rounds of speed")
    parser.add_argument("--memories", type=int, default=3, help="rounds of memory")
    parser.add_argument("--files", type=int, default=2000, help="small files")
    return parser.parse_args()


def run(options: argparse.Namespace, folder: Path) -> dict:
    desk = Desk()
    site = make_site(folder, options.files, desk)
    clients = [quillox(options.quillox, "scheme", sourceKind="local", localPath=str(site)),
               quillox(options.quillox, "nginx")]
    with NginxStage(site, options.display) as stage:
        files = Files(stage, folder, desk, options.files)
        before = machine()
        in_rounds(clients, 1, files.speeds, "warm-up, discarded")
        speeds = in_rounds(clients, options.rounds, files.speeds, "files/s, at once, MB/s")
        memory = in_rounds(clients, options.memories, files.memory, "MiB of the program, of all")
    return {"machine": before, "reaches": reaches(speeds, memory),
            "rounds": {"speeds": speeds, "memory": memory}}


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
