"""A site that tries to break out, and a bystander that sees who does: both are served here, under names of their own.

Every page of theirs looks like the known page. What the test wants tried is run in it, on a click that is real, and
the page tells what came of it.
"""

import json
import threading
from urllib.parse import unquote, urlsplit

from .site import PAGE
from .tls import server_context
from .waiting import wait_for
from .web import Handler, Server

GOOD, EVIL = "good.localhost", "evil.localhost"
POLL = 20.0  # seconds that a page waits for its next step at a time
PRESSABLE = "<a href=/pressed style='pointer-events:auto!important'><svg width=2000 height=2000></svg></a>"
AGENT = PAGE + b"""<div id=stage style="position:fixed;inset:0;z-index:9;opacity:0;overflow:hidden"></div><script>
const id = Math.random(), seen = []
const tell = (path, value) => fetch(origin + path, { method: "POST", keepalive: true, body: JSON.stringify(value ?? null) })
for (const type of ["click", "auxclick", "contextmenu", "paste", "dragstart", "dragenter", "dragover", "drop", "dragend"])
  addEventListener(type, event => seen.at(-1) === type || seen.push(type), true)
addEventListener("mousemove", event => { if (event.clientX === 3) tell("/seen", seen.splice(0)) }, true)
function add(tag, attributes) {
  const element = Object.assign(document.createElement(tag), attributes)
  element.style = "position:fixed;left:40%;top:40%;opacity:0"
  document.body.append(element)
  return element
}
function once(target, ...types) {
  return new Promise(done => { for (const type of types) target.addEventListener(type, () => done(type), { once: true }) })
}
async function run(step) {
  let answer
  try {
    answer = new (async () => {}).constructor("home", "away", step.script)(step.home, step.away)
    answer = await Promise.race([answer, new Promise(done => setTimeout(done, 5000, "late"))])
  } catch (error) { answer = String(error.name ?? error) }
  await tell("/done/" + step.number, answer)
}
async function obey() {
  const answer = await fetch(`${origin}/next?${location.pathname}&${id}`, { cache: "no-store" })
  if (answer.status !== 200) return
  const step = await answer.json(), stage = document.getElementById("stage")
  if (step.isImmediate) return run(step)
  stage.innerHTML = step.html
  stage.onclick = step.script ? () => { stage.onclick = null; run(step) } : null
  await tell("/ready/" + step.number)
}
(async () => { while (window === top) try { await obey() } catch { await new Promise(done => setTimeout(done, 50)) } })()
</script>"""


class HostileSite:
    def __init__(self, home):
        self.requests = []  # host and path of everything that was asked for but by the pages' own machinery
        self.seen = []  # lists of events that pages saw until the pointer came to their fourth column
        self._change = threading.Condition()
        self._steps = []
        self.page = None  # path and number of the last one that asked for a step
        self.ready, self.answers = -1, {}
        self._servers = [Server(self._handler(), context=context) for context in (None, server_context(home, GOOD))]

    def address(self, host, is_secure=False):
        scheme = "https" if is_secure else "http"
        return f"{scheme}://{host}:{self._servers[is_secure].server_port}"

    def offer(self, script="", html="", is_immediate=False):
        """Gives the present page something to do; returns the step's number."""
        with self._change:
            number = len(self._steps)
            self._steps.append({"number": number, "script": script, "html": html, "isImmediate": is_immediate,
                                "home": self.address(GOOD), "away": self.address(EVIL)})
            self._change.notify_all()
        return number

    def prepare(self, script="", html=""):
        """Until the script waits for a click anywhere, or the page shows the markup, invisibly, in front of all."""
        number = self.offer(script, html)
        wait_for(f"page that is ready for {script or html}", lambda: number <= self.ready)
        return number

    def answer(self, number, what=""):
        wait_for(f"end of {what or self._steps[number]['script']}", lambda: number in self.answers)
        return self.answers[number]

    def ask(self, script):
        """What a script comes to that needs no click."""
        return self.answer(self.offer(script, is_immediate=True))

    def asked_for(self, host):
        return [path for asked, path in self.requests if asked == host]

    def end(self):
        with self._change:
            self.page = None
            self._change.notify_all()
        for server in self._servers:
            server.end()

    def _next_step(self, page):
        """The next step for a page, None when there is none for long, or for another page."""
        with self._change:
            self.page = page
            self._change.notify_all()
            self._change.wait_for(lambda: self.page != page or self._steps[self.ready + 1:], POLL)
            return next(iter(self._steps[self.ready + 1:]), None) if self.page == page else None

    def _handler(self):
        site = self

        class SiteHandler(Handler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                host, url = (self.headers["Host"] or "").split(":")[0], urlsplit(self.path)
                if url.path == "/next":
                    step = site._next_step(url.query)
                    return self.answer(json.dumps(step).encode()) if step else self.answer(b"", 204)
                site.requests.append((host, self.path))
                if url.path.startswith("/redirect/") and (left := int(url.path[10:])):
                    target = f"/redirect/{left - 1}?{url.query}" if left > 1 else unquote(url.query)
                    return self.answer(b"", 302, Location=target)
                answer = ANSWERS.get("/" + url.path.split("/")[1], lambda _: (200, {}, AGENT))
                status, headers, body = answer(unquote(url.query))
                return self.answer(body, status, **headers)

            def do_POST(self):
                value = self.content()
                _, what, *number = self.path.split("/")
                if what == "ready":
                    site.ready = int(number[0])
                elif what == "done":
                    site.answers[int(number[0])] = json.loads(value)
                    site.ready = max(site.ready, int(number[0]))  # A page that goes may not get to say so before.
                elif what == "seen":
                    site.seen.append(json.loads(value))
                else:
                    return self.do_GET()
                return self.answer(b"", 204)

        return SiteHandler


def file(kind, content=b"stolen", **headers):
    return lambda _: (200, {"kind": kind, **headers}, content)


ANSWERS = {
    "/tall": lambda _: (200, {}, AGENT + b"<style>::-webkit-scrollbar{display:none}</style><div style='height:5000px'>"),
    "/strict": lambda _: (200, {"Content_Security_Policy": "style-src 'none'"}, AGENT),
    "/frame": lambda _: (200, {}, PRESSABLE.encode()),
    "/lead": lambda to: (200, {}, f"<script>top.location = {to!r}</script>".encode()),
    "/written": lambda to: (200, {}, AGENT + f"<script>document.write('<iframe style=position:fixed;opacity:0 src={to}>"
                                             "</iframe>')</script>".encode()),
    "/see-other": lambda to: (303, {"Location": to}, b""),
    "/refresh": lambda to: (200, {"Refresh": f"0; url={to}"}, AGENT),
    "/meta": lambda to: (200, {}, AGENT + f"<meta http-equiv=refresh content='0; url={to}'>".encode()),
    "/unload": lambda _: (200, {}, AGENT + b"<script>onbeforeunload = () => 'Stay!'</script>"),
    "/login": lambda _: (401, {"WWW_Authenticate": "Basic realm=bait"}, AGENT),
    "/attachment": file("text/html", Content_Disposition="attachment; filename=4.html"),
    "/octets": file("application/octet-stream"),
    "/zip": file("application/zip"),
    "/pdf": file("application/pdf", b"%PDF-1.4\n"),
    "/worker.js": lambda to: (200, {"kind": "text/javascript"},
                              f"onfetch = event => event.respondWith(Response.redirect({to!r}))".encode()),
}
