"""A page that means harm: what it tries shows nothing of the engine's, writes nothing and leads nowhere."""

import pytest
from rig.canaries import BINDINGS
from rig.foreign_drag import ForeignDrag
from rig.hostile import EVIL, PRESSABLE
from rig.siege import BareSiege, Siege
from rig.waiting import wait_for

# What a page may try to leave its site; `home` and `away` are the addresses of the site and of the other one.
ESCAPES = {
    "link": "add('a', { href: away }).click()",
    "link to a new window": "add('a', { href: away, target: '_blank' }).click()",
    "link to a named window": "add('a', { href: away, target: 'other' }).click()",
    "replaced location": "location.replace(away)",
    "assigned location": "location = away",
    "user name of the site": "location = away.replace('//', '//good.localhost@')",
    "backslash": r"location = away.replace('//', '\\\\')",
    "escaped letter": "location = away.replace('evil', '%65VIL')",
    "new window": "open(away)",
    "redirects": "location = '/redirect/3?' + encodeURIComponent(away)",
    "redirect of a form": "add('form', { action: '/see-other?' + encodeURIComponent(away), method: 'POST' }).submit()",
    "redirect of a new window": "open('/redirect/1?' + encodeURIComponent(away))",
    "header": "location = '/refresh?' + encodeURIComponent(away)",
    "tag": "location = '/meta?' + encodeURIComponent(away)",
    "form": "add('form', { action: away }).submit()",
    "form that posts": "add('form', { action: away, method: 'POST' }).submit()",
    "form to a new window": "add('form', { action: away, method: 'POST', target: '_blank' }).submit()",
    "frame": "add('iframe', { src: away })",
    "redirected frame": "add('iframe', { src: '/redirect/2?' + encodeURIComponent(away) })",
    "object": "add('object', { data: away, type: 'text/html' })",
    "embed": "add('embed', { src: away, type: 'text/html' })",
    "written frame": "location = '/written?' + encodeURIComponent(away)",
    "frame that leads the page": "add('iframe', { src: '/lead?' + encodeURIComponent(away) })",
    "worker": """const worker = await navigator.serviceWorker.register('/worker.js?' + encodeURIComponent(away), { scope: '/worked' })
while (!worker.active) await new Promise(done => setTimeout(done, 20))
location = '/worked'""",
}
LANDS = {"header": "/refresh", "tag": "/meta", "written frame": "/written"}  # within the site, at the page that tries
NO_WINDOW = {"link to a new window", "link to a named window", "new window", "redirect of a new window",
             "form to a new window"}  # The bare engine drops these by itself.
NOWHERE = """for (const address of ["mailto:a@b", "tel:112", "foo:bar", "itms-apps:x", "view-source:" + home, "about:blank",
    "about:srcdoc", "data:text/html,<h1>x", "file:///etc/passwd", "ftp://evil.localhost/", "http://[bad/",
    "qxlocal://local/", "javascript:void 0", URL.createObjectURL(new Blob(["<h1>x"], { type: "text/html" }))]) {
  for (const target of ["", "_blank"]) try { add("a", { href: address, target }).click() } catch {}
  try { open(address) } catch {}
}
navigator.registerProtocolHandler?.("web+x", home + "/?%s")
for (const change of [() => moveTo(9, 9), () => resizeTo(9, 9), close, () => top.close(), blur, focus]) change()"""
IN_PLACE = {  # What leads to another page of the site, in the same view.
    "open('/opened')": "/opened",
    "add('a', { href: '/linked', target: '_blank' }).click()": "/linked",
    "add('form', { action: '/sent', method: 'POST', target: '_blank' }).submit()": "/sent",
    "history.pushState(0, '', '/pushed'); location.reload()": "/pushed",
    "onbeforeunload = () => 'Stay!'; location = '/left'": "/left",
    "location = '/login'": "/login",
    "history.go(-2)": "/pushed",
    "setInterval(() => open('/popup'), 10)": "/popup",
}
SHOWS = {  # What the engine would show, and what the page is told of it.
    "for (let i = 0; i < 9; ++i) alert(i)": None,
    "return [confirm('?'), prompt('?', 'bait')]": [False, None],
    "add('input', { type: 'file', multiple: true }).click()": None,
    "add('input', { type: 'file', webkitdirectory: true }).showPicker()": None,
    "add('input', { type: 'color' }).showPicker()": None,
}
LOGINS = {"return (await fetch('/login')).status": 401, "add('iframe', { src: '/login' })": None}
DOWNLOADS = (
    "add('a', { href: 'data:,x', download: '1' }).click()", "add('a', { href: '/', download: '2.html' }).click()",
    "add('a', { href: URL.createObjectURL(new Blob(['x'])), download: '3' }).click()", "location = '/attachment'")
# Not compared: a dialog that first looks for printers, what the bare engine drops, a page of its own.
UNSHOWN = ("print()", "open('/attachment')", "add('iframe', { src: '/attachment' })", "location = '/octets'",
           "location = '/zip'", "location = '/pdf'")
RIGHTS = {
    "camera": "return (await navigator.mediaDevices?.getUserMedia({ video: true, audio: true })) ?? null",
    "screen": "return (await navigator.mediaDevices?.getDisplayMedia?.()) ?? null",
    "place": "return new Promise(done => navigator.geolocation.getCurrentPosition(done, error => done(error.code)))",
    "notification": "return Notification.requestPermission()",
    "clipboard": "return navigator.clipboard.readText()",
    "paste": "return document.execCommand('paste')",
    "pointer": "document.body.requestPointerLock(); return once(document, 'pointerlockchange', 'pointerlockerror')",
    "full screen": "return [typeof document.body.requestFullscreen, typeof document.body.webkitRequestFullscreen]",
}
DENIED = {"camera": None, "screen": None, "place": 1, "notification": "denied", "clipboard": "NotAllowedError",
          "paste": False, "pointer": "pointerlockerror", "full screen": ["undefined", "undefined"]}


@pytest.mark.on("openbox")
def test_no_page_leaves_its_site(bed):
    with Siege(bed) as siege:
        for name, script in ESCAPES.items():
            siege.attempt(script, leads_to=LANDS.get(name))
            assert not siege.site.asked_for(EVIL), name
        siege.attempt(NOWHERE)
        for script, path in IN_PLACE.items():
            siege.attempt(script, leads_to=path)
        siege.check_machine()
        assert not siege.site.asked_for(EVIL)


@pytest.mark.on("openbox", "sway")
def test_engine_shows_and_writes_nothing(bed):
    with Siege(bed) as siege:
        for script, answer in (SHOWS | LOGINS).items():
            assert siege.attempt(script) == answer, script
        for script in (*DOWNLOADS, *UNSHOWN):
            siege.attempt(script)
        assert {name: siege.attempt(script) for name, script in RIGHTS.items()} == DENIED
        siege.attempt("location = home.replace('http:', 'https:')", leads_to="/")  # A failed load, which is tried again.
        siege.check_machine()


LINK = "<a href={} style='display:block;height:100%'></a>"
HALVES = """<div draggable=true style="height:50%" ondragstart="event.dataTransfer.setData('text/uri-list', '{}')"></div>
<div style="height:50%" ondragover="{}"></div>"""
TOOLTIP = "<div title=bait style='height:100%'></div>"
SELECTED = "const field = add('textarea', { value: 'bait' }); field.focus(); field.select()"
SIZE = "return [innerWidth, devicePixelRatio, visualViewport.scale]"
PRESSES = (  # page, what is put into it, and keys that are pressed there instead of a click
    ("/plain", "stage.innerHTML = inner", ""),
    ("/strict", "stage.innerHTML = inner", ""),
    ("/plain", "stage.attachShadow({ mode: 'closed' }).innerHTML = inner", ""),
    ("/plain", """stage.innerHTML = `<iframe width=2000 height=2000 src=${home.replace('//', '//sub.')}/frame>`
        await once(stage.firstChild, 'load')""", ""),
    ("/plain", "add('a', { href: '/pressed' }).focus()", "Return"),
    ("/plain", "add('button', { onclick() { location = '/pressed' } }).focus()", "space"),
)
FILE = "file:///etc/passwd"


@pytest.mark.on("openbox with bindings")
def test_pointer_stays_in_the_page(bed):
    with Siege(bed) as siege:
        siege.site.prepare(html=LINK.format(siege.site.address(EVIL)))
        for held in ("super", "shift", "ctrl"):
            with bed.display.hold(held):
                assert siege.events(siege.click) == ["click"], held
        siege.attempt(SELECTED)
        assert siege.events(lambda: siege.click(2)) == []
        assert "contextmenu" in siege.events(lambda: siege.click(3))
        siege.check("buttons")

        drag = ForeignDrag(bed.display, FILE)
        drag.enter()
        assert not any(drag.move(*siege.centre) for _ in range(20)) and siege.events(drag.drop) == []
        for address, end in (siege.site.address(EVIL), ""), (FILE, ""), ("bait", "event.preventDefault()"):
            siege.site.prepare(html=HALVES.format(address, end))
            with siege.drag():
                press_all(bed)
            if end:
                wait_for("end of the drop", lambda: siege.saw("dragend") and siege.saw("drop"))
            siege.events()
            press_all(bed)
            siege.check(f"drop of {address}")

        size = siege.site.ask(SIZE)
        for button in (4, 5, 4):
            with bed.display.hold("ctrl"):
                siege.click(button)
        assert siege.site.ask(SIZE) == size
        siege.site.prepare(html=TOOLTIP)
        siege.hover()
        siege.site.ask("await new Promise(done => setTimeout(done, 1500))")  # Longer than tooltips take.
        siege.check("wheel and tooltip")
        assert not bed.display.fired() and not siege.site.asked_for(EVIL)
        siege.check_machine()


@pytest.mark.on("openbox")
@pytest.mark.parametrize("is_scroll_only", (True, False))
def test_scroll_only_page_cannot_be_pressed(bed, is_scroll_only):
    with Siege(bed, scrollOnly=is_scroll_only) as siege:
        def pressed():
            return sum(path == "/pressed" for _, path in siege.site.requests)
        for number, (path, script, keys) in enumerate(PRESSES):
            siege.return_to(f"{path}/{number}")
            siege.site.ask(f"const inner = `{PRESSABLE}`, stage = document.getElementById('stage'); {script}")
            bed.display.press(keys) if keys else siege.click()
            if is_scroll_only:
                siege.events()
                assert not pressed(), script
            else:
                wait_for(f"effect of {script}", lambda: pressed() > number)
        siege.return_to("/tall")
        siege.click(5)
        wait_for("scrolled page", lambda: siege.site.ask("return scrollY"))


@pytest.mark.on("openbox")
def test_bare_engine_does_all_that(bed):
    with BareSiege(bed) as siege:
        for number, name in enumerate(name for name in ESCAPES if name not in NO_WINDOW):
            count = len(siege.site.asked_for(EVIL))
            siege.begin(ESCAPES[name])
            wait_for(name, lambda: len(siege.site.asked_for(EVIL)) > count)
            siege.return_to(f"/after/{number}")
        for script in SHOWS:
            number = siege.begin(script)
            wait_for(f"what {script} shows", siege.shows_other)
            siege.escape(number)
        for script in DOWNLOADS:
            siege.begin(script)
            siege.wait_new_file(script)
        for number, script in enumerate(LOGINS):
            siege.begin(script)
            wait_for(f"what {script} shows", siege.shows_other)
            siege.return_to(f"/refused/{number}")


@pytest.mark.on("openbox")
def test_bare_engine_hears_the_pointer(bed):
    with BareSiege(bed) as siege:
        siege.attempt(SELECTED)
        assert "paste" in siege.events(lambda: siege.click(2))
        siege.site.prepare(html=TOOLTIP)
        for act in (siege.hover, lambda: siege.click(3)):
            act()
            wait_for("tooltip or menu", siege.shows_other)
            siege.escape(siege.site.offer(is_immediate=True))

        drag = ForeignDrag(bed.display, FILE)
        drag.enter()
        assert "dragenter" in siege.events(lambda: wait_for("drag that is taken", lambda: drag.move(*siege.centre)))


def press_all(bed):
    for keys in BINDINGS:
        bed.display.press(keys)
