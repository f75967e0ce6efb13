"""Every spelling of an address that a sealed site refuses, tried in every way that a page has."""

import json
import re
import threading
from collections import Counter
from pathlib import Path

import pytest
from rig.site import PAGE
from rig.waiting import wait_for
from rig.web import Handler, Server

CORPUS = Path(__file__).parent.parent / "corpus/addresses.txt"
GOOD = "good.localhost"  # Every name below localhost leads to this machine, without a name server.
FRAMED = ("location", "link", "form", "frame")  # Attempts that run in frames, many at once.
REACHED = 100  # spellings by each of these without the rules; the rest are no addresses, or of no server here

# Does the attempts that it is given. The fences after them, one after the other, are frames of hosts new to the
# engine, so they take the ways of the attempts, later: they are judged, looked up, connected and answered. A load that
# was let through and then failed has stopped its fence, so that is tried again.
DRIVER = PAGE + b"""<style>iframe { position: fixed; width: 0; height: 0; border: 0 }</style><script>
const turn = time => new Promise(done => setTimeout(done, time))
const add = (page, tag, properties) =>
  Object.assign(page.document.body.appendChild(page.document.createElement(tag)), properties)
const ways = {
  location: (page, url) => { page.location.href = url },
  link: (page, url) => add(page, "a", { href: url }).click(),
  form: (page, url) => add(page, "form", { action: url }).submit(),
  frame: (page, url) => add(page, "iframe", { src: url }),
  "link to a new window": (page, url) => add(page, "a", { href: url, target: "_blank" }).click(),
  "new window": (page, url) => page.open(url),
}
function go({ way, urls, framed }) {
  let taken = 0
  for (const url of urls) try {
    ways[way](framed ? add(window, "iframe").contentWindow : window, url)
    ++taken
  } catch { }  // It is no address.
  return taken
}
async function attempt(next) {
  if (next.way.includes("new window")) {  // Pages need a visitor's click for it.
    const clicked = new Promise(done => onclick = () => { go(next); done() })
    await fetch("/clickable")
    await clicked
  } else if (!go(next)) return
  await turn()  // A new location waits for one, too.
  for (let passed = 0; passed < 1 + next.urls.length / 20;) {
    const fence = add(window, "iframe", { src: `http://fence${next.number}-${passed}.${location.host}/` })
    await Promise.race([new Promise(done => fence.onload = () => { ++passed; done() }), turn(1000)])
  }
  document.querySelectorAll("iframe, a, form").forEach(element => element.remove())
}
async function run() {
  for (let next; next = await (await fetch("/next")).json();) await attempt(next)
}
run()
</script>"""
ELSEWHERE = "<!doctype html><script>if (top === self) location = '{}'</script>"


def spellings(port):
    """The rows of the corpus for a site that is kept to its domain, as pairs of "allowed" or not, and spelling."""
    table = CORPUS.read_text().split("\n# Kept to ")[1]
    for row in table.split("\n"):
        if row.startswith(("allowed ", "refused ")):
            text = row[8:].replace("{port}", str(port))
            text = re.sub(r"\{U\+(\w+)\}", lambda match: chr(int(match[1], 16)), text)
            yield row.startswith("allowed"), re.sub(r"\{(.+?)\*(\d+)\}", lambda match: match[1] * int(match[2]), text)


class Servers:
    """Answers under every name and address of this machine, and tells the site's page what to try."""

    def __init__(self):
        servers = self
        self.attempts = []
        self.given = 0
        self.clickable = 0
        self.foreign = []  # (number of the attempt, host) of requests that were not for the site
        self._lock = threading.Lock()

        class AnyHandler(Handler):
            def do_GET(self):
                host = (self.headers["Host"] or "").rsplit(":", 1)[0]
                if host != GOOD and not host.endswith("." + GOOD):
                    servers.foreign.append((servers.given, host))
                    return self.answer(ELSEWHERE.format(servers.url).encode())
                servers.clickable += self.path == "/clickable"
                self.answer(json.dumps(servers.next()).encode() if self.path == "/next"
                            else DRIVER if self.path == "/" and host == GOOD else b"")

        self._server = Server(AnyHandler, "::")  # and, as Linux has it, by IPv4 too
        self.end = self._server.end
        self.port = self._server.server_port
        self.url = f"http://{GOOD}:{self.port}/"

    def next(self):
        with self._lock:
            self.given += 1
        return self.attempts[self.given - 1] if self.given <= len(self.attempts) else None


@pytest.fixture
def servers():
    servers = Servers()
    yield servers
    servers.end()


def run(bed, servers, attempts, **settings):
    servers.attempts = [{"number": number, "way": way, "urls": urls, "framed": framed}
                        for number, (way, urls, framed) in enumerate(attempts)]
    bed.settings(url=servers.url, autoStartKiosk=True, **settings)
    bed.start()
    clicks = 0

    def is_over():
        nonlocal clicks
        while clicks < servers.clickable:
            clicks += 1
            bed.display.click(300, 300)
        return servers.given > len(servers.attempts)
    wait_for("end of the attempts", is_over, deadline=120)


@pytest.mark.on("openbox")
def test_no_spelling_of_a_refused_address_leaves_the_site(bed, servers):
    refused = [text for is_allowed, text in spellings(servers.port) if not is_allowed]
    assert len(refused) >= 150
    run(bed, servers, [*((way, refused, True) for way in (*FRAMED, "link to a new window")),
                       *(("location", [url], False) for url in refused), ("new window", refused, False)])
    assert servers.foreign == []
    bed.wait_sealed()


@pytest.mark.on("openbox")
def test_without_the_rules_the_same_spellings_lead_away(bed, servers):
    """So the attempts are real ones."""
    away = [text for is_allowed, text in spellings(servers.port) if not is_allowed and f"{servers.port}" in text]
    alone = [text for text in away if text[0] in "/\\" and text.strip("/\\") == f"evil.localhost:{servers.port}"]
    run(bed, servers, [*((way, away, True) for way in FRAMED), *((way, [url], way.startswith("link")) for url in alone
                       for way in ("location", "link to a new window", "new window"))], restrictToDomain=False)
    reached = Counter()
    for given, _ in servers.foreign:
        attempt = servers.attempts[given - 1]
        reached[attempt["way"], len(attempt["urls"]) > 1] += 1
    print(f"reached, of {len(away)} in frames and {len(alone)} alone:", dict(reached))
    assert all(reached[way, True] >= REACHED for way in FRAMED)
    assert all(reached[way, False] >= len(alone) / 2 for way in ("location", "link to a new window", "new window"))
