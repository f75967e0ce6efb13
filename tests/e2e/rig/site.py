"""A page whose every pixel is known, served on the loopback interface."""

import json

from PIL import Image

from .web import Handler, Server

BAND = 16
COLOURS = {"left": "#1040f0", "right": "#f0c010", "top": "#e01030", "bottom": "#10c040"}
CENTRE = "#e8e0d8"
SIDES = {"left": "left:0;top:0;bottom:0;width", "right": "right:0;top:0;bottom:0;width",
         "top": "left:0;right:0;top:0;height", "bottom": "left:0;right:0;bottom:0;height"}
PAGE = (f"<!doctype html><title>Bands</title><style>html{{background:{CENTRE}}}*{{cursor:none}}</style>"
        + "".join(f"<div style='position:fixed;{SIDES[side]}:{BAND}px;background:{colour}'></div>"
                  for side, colour in COLOURS.items())).encode()
# Looks the same, and tells the keys that it saw whenever X went up, and when its hidden text field got the keyboard.
# Over the field is a list. Asked for as /thief, it takes the keyboard at every opportunity; as /busy, it is busy
# for two seconds after a B; as /picker, it opens a date picker on C and takes it away a moment later.
KEYS = PAGE + b"""<style>input, select { position: fixed; left: 10%; top: 10%; width: 10%; height: 10%; opacity: 0 }</style>
<input autofocus maxlength="50" onfocus="fetch('/focused')"><select onchange="fetch('/chosen/' + value)"><option>one<option>two<option>three</select><script>
let keys = []
const field = document.querySelector("input")
for (const type of ["keydown", "keyup"]) addEventListener(type, event => {
  keys.push(`${type} ${event.code}`)
  if (keys.at(-1) !== "keyup KeyX") return
  fetch("/told", { method: "POST", body: JSON.stringify([keys, field.value]) })
  keys = []
}, true)
const date = document.createElement("input")
date.type = "date"
if (location.pathname === "/busy") addEventListener("keydown", event => {
  for (const end = Date.now() + 2000; event.code === "KeyB" && Date.now() < end;);
})
if (location.pathname === "/picker") addEventListener("keydown", event => {
  if (event.code !== "KeyC") return
  document.body.append(date)
  date.showPicker()
  setTimeout(() => { date.remove(); field.focus(); fetch("/removed") }, 300)
})
if (location.pathname === "/thief") setInterval(() => { window.focus(); field.focus() }, 50)
</script>"""
# Pages of keys in other colours; a click on one leads to the next. Whoever goes on from the last gets no answer.
WALK = ("#406080", "#806040", "#408060")
NEXT = b"<script>addEventListener('click', () => { location = Number(location.pathname.slice(6)) + 1 })</script>"
PAGES = {f"/walk/{number}": KEYS.replace(CENTRE.encode(), colour.encode()) + NEXT
         for number, colour in enumerate(WALK, 1)}
PAGES |= dict.fromkeys(("/keys", "/thief", "/busy", "/picker"), KEYS)


def page_picture(size, centre=CENTRE):
    """What a sealed screen of this size shows.

    The page's view reaches one pixel below the screen, so that no line of the window shows there.
    """
    width, height = size[0], size[1] + 1
    picture = Image.new("RGB", (width, height), centre)
    boxes = {"left": (0, 0, BAND, height), "right": (width - BAND, 0, width, height),
             "top": (0, 0, width, BAND), "bottom": (0, height - BAND, width, height)}
    for side, colour in COLOURS.items():
        picture.paste(colour, boxes[side])
    return picture.crop((0, 0, *size))


class Site:
    def __init__(self):
        site = self
        self.paths = []  # that were asked for
        self.told = []  # by the page of keys

        class SiteHandler(Handler):
            def do_GET(self):
                site.paths.append(self.path)
                if self.path != f"/walk/{len(WALK) + 1}":
                    self.answer(PAGES.get(self.path, PAGE))

            def do_POST(self):
                site.told.append(json.loads(self.content()))
                self.answer()

        self._server = Server(SiteHandler)
        self.end = self._server.end
        self.url = f"http://127.0.0.1:{self._server.server_port}/"

    @property
    def requests(self):
        return len(self.paths)
