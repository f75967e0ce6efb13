"""Audio and video of a website in a folder: played and sought by its own pages, out of reach for all others."""

import os
import subprocess

import pytest
from rig.home import needs
from rig.site import PAGE
from rig.web import Handler, Server

PICTURE = "video/x-raw,width=160,height=120,framerate=25/1"
# Six seconds: red, then blue, with a tone.
SOURCE = (f"concat name=both videotestsrc pattern=red num-buffers=75 ! {PICTURE} ! both. "
          f"videotestsrc pattern=blue num-buffers=75 ! {PICTURE} ! both. "
          "both. ! {} ! mux. audiotestsrc num-buffers=258 ! audio/x-raw,rate=44100 ! {} ! {} name=mux ! filesink location={}")
FILMS = {"film.webm": ("vp8enc", "vorbisenc", "webmmux"),
         "Grün film.mp4": ("x264enc speed-preset=ultrafast key-int-max=25", "avenc_aac", "mp4mux")}
REFUSED = ("missing.webm", "pipe.webm", "outside.webm", "..%252fsecret.webm", "folder")
TOOLS = """
const failed = []
async function check(name, test) { try { if (!await test()) failed.push(name) } catch (error) { failed.push(`${name}: ${error}`) } }
function next(film, ...types) {
  return new Promise((done, fail) => {
    for (const type of types) film.addEventListener(type, () => done(type), { once: true })
    film.addEventListener("error", () => fail(`error ${film.error.code}`), { once: true })
    setTimeout(() => fail(`no ${types}`), 10000)
  })
}
function open(url) {
  const film = document.createElement("video")
  film.muted = true
  film.src = url
  document.body.append(film)
  return film
}
function hue(film) {
  const canvas = document.createElement("canvas").getContext("2d")
  canvas.drawImage(film, 0, 0)
  const [red, green, blue] = canvas.getImageData(9, 9, 1, 1).data
  return red > 200 && blue < 50 ? "red" : blue > 200 && red < 50 ? "blue" : [red, green, blue]
}
async function finish() {
  if (failed.length) document.body.textContent = `${location}: ${failed.join(", ")}`
  else { document.open(); document.write(await (await fetch("/bands.html")).text()); document.close() }
}
"""
LOCAL = """
const heard = new Promise(done => addEventListener("message", event => done(event.data)))
for (const url of FILMS) await check(url, async () => {
  const film = open(url)
  await next(film, "loadeddata")
  if (film.duration < 5.9 || film.duration > 6.1 || hue(film) !== "red") return false
  film.currentTime = film.duration / 2 + 1
  await next(film, "seeked")
  const time = film.currentTime
  await film.play()
  while (film.currentTime < time + 0.3) await next(film, "timeupdate")
  return hue(film) === "blue" && film.audioTracks.length === 1
})
for (const url of REFUSED) await check(url, () => {
  const film = open(url)
  return new Promise(done => { film.onerror = () => done(film.error.code === 4); setTimeout(done, 5000, false) })
})
const frame = document.createElement("iframe")
frame.src = FOREIGN
document.body.append(frame)
await check("foreign frame", async () => { failed.push(...await heard); return true })
if (failed.length) finish()
else location = FOREIGN
"""
# The same page in a frame of the site's, and in place of the site.
FOREIGN = """
for (const url of FILMS) await check(`seen from ${top === self ? "another site" : "a frame"}: ${url}`, () => {
  const film = open("qxlocal://local/" + url)
  return new Promise(done => { film.onerror = () => done(true); film.onloadedmetadata = () => done(false) })
})
if (top === self) finish()
else parent.postMessage(failed, "*")
"""


def page(script, **constants):
    values = "".join(f"const {name} = {value!r}\n" for name, value in constants.items())
    return f"<!doctype html><meta charset=utf-8><body><script type=module>{values}{TOOLS}{script}</script>".encode()


@pytest.fixture
def films(bed):
    needs("gst-launch-1.0")
    site = bed.home.subfolder("site")
    for name, parts in FILMS.items():
        for part in parts:
            if subprocess.run(["gst-inspect-1.0", "--exists", part.split()[0]]).returncode:
                pytest.skip(f"needs {part.split()[0]} of GStreamer: see packaging/packages/test.txt")
        made = bed.home.folder / "made"
        bed.home.run("gst-launch-1.0", "-q", *SOURCE.format(*parts, made).split())
        made.rename(site / name)
    return site


@pytest.fixture
def foreign():
    """Another site, which tries to play what is in the folder."""
    class Foreign(Handler):
        def do_GET(self):
            self.answer(PAGE if self.path == "/bands.html" else page(FOREIGN, FILMS=list(FILMS)))

    server = Server(Foreign)
    yield f"http://127.0.0.1:{server.server_port}/"
    server.end()


@pytest.mark.on("openbox")
def test_plays_the_sites_films_to_its_own_pages_only(bed, films, foreign):
    (films / "index.html").write_bytes(page(LOCAL, FILMS=list(FILMS), REFUSED=list(REFUSED), FOREIGN=foreign))
    (films / "bands.html").write_bytes(PAGE)
    (films / "folder").mkdir()
    secret = bed.home.folder / "secret.webm"
    secret.write_bytes((films / "film.webm").read_bytes())
    (films / "outside.webm").symlink_to(secret)
    os.mkfifo(films / "pipe.webm")
    bed.settings(sourceKind="local", localPath=str(films), autoStartKiosk=True, restrictToDomain=False)
    bed.start()
    bed.wait_sealed()
    bed.unseal()
    bed.close()
